// The handles of one wait.
#pragma once

#include "Platform/Winsock.h"

namespace VelNet {

// What is waited for to read and to write, then what is ready. Lives on the stack, for one wait.
class WatchedSockets {
public:
    // Takes the handle into the set that the event belongs to; an event of no set is passed over.
    // Required: the system's sets have room for 64 different handles, and further ones are not
    // watched.
    void Watch(Winsock::Handle handle, int event) noexcept;

    bool IsEmpty() const noexcept { return reading_.IsEmpty() && writing_.IsEmpty(); }

    // The result of the system's select, which leaves in the sets what is ready.
    int Wait(unsigned int seconds);

    bool IsReadable(Winsock::Handle handle) const noexcept { return reading_.Contains(handle); }
    bool IsWritable(Winsock::Handle handle) const noexcept { return writing_.Contains(handle); }

private:
    struct Set {
        bool Contains(Winsock::Handle handle) const noexcept;
        bool IsEmpty() const noexcept { return handles.count == 0; }
        // Takes in a handle that is not there yet, as long as there is room.
        void Add(Winsock::Handle handle) noexcept;
        // Null for a set of nothing.
        Winsock::HandleSet* OrNone() noexcept { return IsEmpty() ? nullptr : &handles; }

        Winsock::HandleSet handles = {};
    };

    Set reading_;
    Set writing_;
    Winsock::Handle largest_ = 0;
};

}  // namespace VelNet

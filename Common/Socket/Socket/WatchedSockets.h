// The handles that one select call waits for.
#pragma once

#include "Platform/Winsock.h"

namespace VelNet {

// The sets for reading and for writing; after the wait, what is ready. Lives on the stack for one
// wait.
class WatchedSockets {
public:
    // Adds the handle to the set for the event; ignores an event without a set.
    //
    // Required (SelectingManyHandles.SixtyFifthIsNotWatched): the system's sets hold 64 different
    // handles, and further ones are not watched.
    void Watch(Winsock::Handle handle, int event) noexcept;

    bool IsEmpty() const noexcept { return reading_.IsEmpty() && writing_.IsEmpty(); }

    // Returns the result of the system's select, which leaves the ready handles in the sets.
    int Wait(unsigned int seconds);

    bool IsReadable(Winsock::Handle handle) const noexcept { return reading_.Contains(handle); }
    bool IsWritable(Winsock::Handle handle) const noexcept { return writing_.Contains(handle); }

private:
    struct Set {
        bool Contains(Winsock::Handle handle) const noexcept;
        bool IsEmpty() const noexcept { return handles.count == 0; }
        // Adds a handle that is not in the set, if it is not full.
        void Add(Winsock::Handle handle) noexcept;
        // Returns null for an empty set.
        Winsock::HandleSet* OrNone() noexcept { return IsEmpty() ? nullptr : &handles; }

        Winsock::HandleSet handles = {};
    };

    Set reading_;
    Set writing_;
    Winsock::Handle largest_ = 0;
};

}  // namespace VelNet

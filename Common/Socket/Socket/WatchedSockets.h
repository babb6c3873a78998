// The handles that one select call waits for.
#pragma once

#include "Platform/Winsock.h"

#include <cstddef>

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
        bool Contains(Winsock::Handle handle) const noexcept { return places[SlotOf(handle)] != 0; }
        bool IsEmpty() const noexcept { return handles.count == 0; }
        // Adds a handle that is not in the set, if it is not full.
        void Add(Winsock::Handle handle) noexcept;
        // Returns null for an empty set.
        Winsock::HandleSet* OrNone() noexcept { return IsEmpty() ? nullptr : &handles; }

        // Called after the system has changed the handles.
        void IndexHandles() noexcept;
        // Returns the slot of the handle's place, or the free slot that it would take.
        std::size_t SlotOf(Winsock::Handle handle) const noexcept;

        // Twice as many slots as handles, so that a free one is near.
        static constexpr std::size_t Slots = std::size_t{2} * Winsock::HandleSet::Room;

        Set() noexcept { handles.count = 0; }

        Winsock::HandleSet handles;        // those beyond the count are never read
        unsigned char places[Slots] = {};  // 1 more than the handle's index; 0 in a free slot
    };

    Set reading_;
    Set writing_;
    Winsock::Handle largest_ = 0;
};

}  // namespace VelNet

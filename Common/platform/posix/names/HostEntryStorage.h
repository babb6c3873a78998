// The storage of the host entry that a name call returns: one per thread, overwritten by its next
// call.
#pragma once

#include "Platform/Winsock.h"

#include <netdb.h>

#include <cstddef>

namespace Posix {

// An entry followed by the memory for its strings and lists.
struct HostEntryStorage {
    Winsock::HostEntry entry;
    std::size_t room;

    char* Room() noexcept { return static_cast<char*>(static_cast<void*>(this + 1)); }
};

// Returns the calling thread's block with at least that much memory, its former contents lost; null
// if memory runs out.
HostEntryStorage* HostEntryOfThread(std::size_t room) noexcept;

// Fills the block's entry from the host that the system's resolver has stored in the block's
// memory.
Winsock::HostEntry* FillFromHost(HostEntryStorage& block, const hostent& host) noexcept;

}  // namespace Posix

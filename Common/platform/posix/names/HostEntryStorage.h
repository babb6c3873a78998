// Where the host entry lies that a name call returns: one for each thread, which its next call
// overwrites.
#pragma once

#include "Platform/Winsock.h"

#include <netdb.h>

#include <cstddef>

namespace Posix {

// An entry with the room that its texts and lists lie in.
struct HostEntryStorage {
    Winsock::HostEntry entry;
    std::size_t room;

    char* Room() noexcept { return static_cast<char*>(static_cast<void*>(this + 1)); }
};

// The calling thread's block with at least that much room, its former contents lost; null without
// memory.
HostEntryStorage* HostEntryOfThread(std::size_t room) noexcept;

// Makes the block's entry the host that the system's resolver has put into the block's room.
Winsock::HostEntry* FillFromHost(HostEntryStorage& block, const hostent& host) noexcept;

}  // namespace Posix

// Whether a socket has a peer.
#pragma once

#include "sockets/SocketTable.h"
#include "sockets/StreamConnect.h"

namespace Posix {

// Also records the outcome of a connect call that was left unfinished, if the kernel has it by now.
inline bool IsConnected(const Socket& socket) noexcept {
    const std::uint32_t flags = socket.entry->Flags();
    if ((flags & Flag::Connecting) == 0) [[likely]]
        return (flags & Flag::Connected) != 0;
    NoticeOutcome(socket);
    return socket.Has(Flag::Connected);
}

void MarkConnected(const Socket& socket) noexcept;

}  // namespace Posix

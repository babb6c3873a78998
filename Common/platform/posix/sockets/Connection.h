// Whether a socket has a peer.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// Also updates the outcome of a connect call that was left unfinished.
bool IsConnected(const Socket& socket) noexcept;

void MarkConnected(const Socket& socket) noexcept;

}  // namespace Posix

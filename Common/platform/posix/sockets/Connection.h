// Whether a socket has a peer.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// Also notices the outcome of a connect call that had to be left unfinished.
bool IsConnected(const Socket& socket) noexcept;

void MarkConnected(const Socket& socket) noexcept;

}  // namespace Posix

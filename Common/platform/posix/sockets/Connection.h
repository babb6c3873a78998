// Whether a socket has a peer.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// Also records the outcome of a connect call that was left unfinished, if the kernel has it by now.
bool IsConnected(const Socket& socket) noexcept;

void MarkConnected(const Socket& socket) noexcept;

}  // namespace Posix

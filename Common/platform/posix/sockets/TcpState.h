// What the kernel knows of a connection.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// The stream's state, TCP_ESTABLISHED and so on; negative with errno when the kernel does not tell.
int TcpState(int descriptor) noexcept;

// Whether the peer has acknowledged that this side ended its half.
bool IsOwnEndAcknowledged(const Socket& socket) noexcept;

}  // namespace Posix

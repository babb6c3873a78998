// What the kernel knows of a connection.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// Returns the stream's state, TCP_ESTABLISHED and so on; negative with errno if the kernel does not
// tell.
int TcpState(int descriptor) noexcept;

// Whether the peer has acknowledged this side's FIN.
bool IsOwnEndAcknowledged(const Socket& socket) noexcept;

}  // namespace Posix

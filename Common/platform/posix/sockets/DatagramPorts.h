// The ports of datagram sockets, most of which nobody names.
#pragma once

#include "sockets/KernelAddress.h"
#include "sockets/SocketTable.h"

namespace Posix {

// The kernel's bind. A port of its choice is nobody else's, also if the socket may share one. False
// with errno when the kernel refuses.
bool BindDatagram(const Socket& socket, const KernelAddress& address) noexcept;

// A socket that sends has a port from then on. False with errno when there is none to have.
bool HavePort(const Socket& socket) noexcept;

}  // namespace Posix

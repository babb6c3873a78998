// The ports of datagram sockets, which are mostly chosen by the system.
#pragma once

#include "sockets/KernelAddress.h"
#include "sockets/SocketTable.h"

namespace Posix {

// The kernel's bind. A port that the kernel chooses is not shared, even if the socket may share
// one. Returns false with errno if the kernel refuses.
bool BindDatagram(const Socket& socket, const KernelAddress& address) noexcept;

// Binds a socket to the port that it has just lost, which its auxiliary sockets may still have.
bool BindDatagramAgain(const Socket& socket, const KernelAddress& address) noexcept;

// Gives a socket that sends and has no port one. Returns false with errno if there is none.
bool TakePort(const Socket& socket) noexcept;
inline bool HavePort(const Socket& socket) noexcept {
    return socket.Has(Flag::Bound) || TakePort(socket);
}

}  // namespace Posix

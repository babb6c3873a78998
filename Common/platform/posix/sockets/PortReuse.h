// Decides who may bind to a port that is or was in use.
//
// Winsock's reuse option lets streams share a port if all of them have set it. The kernel's
// SO_REUSEPORT means the same for streams. For datagrams it would deliver each multicast to only
// one socket, so SO_REUSEADDR is used there.
//
// The kernel keeps ended connections for a minute (TIME_WAIT), and with them their ports, which
// Winsock frees at once. A stream with SO_REUSEADDR may bind to a port if all streams on it have
// that option too and none of them listens. So ended connections and the socket that is being bound
// must have it; sockets that stay bound or have connected must not, or any process could take their
// ports. Listeners keep it, since listening protects the port, and accepted connections inherit it.
#pragma once

#include "sockets/KernelAddress.h"
#include "sockets/SocketTable.h"

namespace Posix {

// Sets Winsock's reuse option. Returns false with errno if the kernel refuses.
bool SetPortSharing(const Socket& socket, bool on) noexcept;

// The kernel's bind and listen for streams, which ignore ended connections. Return false with errno
// if the kernel refuses.
bool BindOverEndedConnections(const Socket& socket, const KernelAddress& address) noexcept;
bool ListenOverEndedConnections(const Socket& socket, int backlog) noexcept;

// Called before a socket is closed. Accepted connections inherit the option from their listener.
void LetPortBeBoundAgain(const Socket& socket) noexcept;

}  // namespace Posix

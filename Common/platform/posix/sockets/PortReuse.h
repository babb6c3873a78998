// Who may have a port that somebody has or had already.
//
// Winsock's reuse option lets streams share a port if all of them have asked for it. That is what
// the kernel means by SO_REUSEPORT; for datagrams, where that one would deal each multicast to one
// socket only, SO_REUSEADDR is alike.
//
// For a minute the kernel keeps ended connections, and with them their ports, which on Winsock are
// free. A stream that carries SO_REUSEADDR may have the port of all streams that carry it too and
// do not listen. So what is left of connections has to carry it, and whoever is being bound; those
// that are bound or connected must not, or any process could take their ports.
#pragma once

#include "sockets/KernelAddress.h"
#include "sockets/SocketTable.h"

namespace Posix {

// Winsock's option. False with errno when the kernel refuses.
bool SetPortSharing(const Socket& socket, bool on) noexcept;

// The kernel's bind and listen for streams, to which ended connections are nothing. False with
// errno when the kernel refuses.
bool BindOverEndedConnections(const Socket& socket, const KernelAddress& address) noexcept;
bool ListenOverEndedConnections(const Socket& socket, int backlog) noexcept;

// Called before a socket is closed. Accepted connections have taken it over from their listener.
void LetPortBeBoundAgain(const Socket& socket) noexcept;

}  // namespace Posix

// The peer of a datagram socket, which may change.
//
// Once a socket has a peer, the kernel accepts nobody else's datagrams, but leaves those in the
// queue that have come before. Winsock does not; so they are removed before anybody can see them.
#pragma once

#include "sockets/KernelAddress.h"
#include "sockets/SocketTable.h"

namespace Posix {

// Sets or replaces the socket's peer. No address and no port remove it.
int ConnectDatagram(const Socket& socket, const KernelAddress& peer);

// Discards the datagrams of others up to the peer's next one. Called whenever a datagram was taken
// from a queue that may hold more of them.
void DiscardStrangers(const Socket& socket);

}  // namespace Posix

// The peer of a datagram socket, which may change.
//
// The kernel lets a socket with a peer hear nobody else, but leaves in its queue what had come from
// others. Winsock does not; so that is taken out before anybody can see it.
#pragma once

#include "sockets/KernelAddress.h"
#include "sockets/SocketTable.h"

namespace Posix {

// Gives the socket its peer, instead of the one that it had. No address and no port take it away.
int ConnectDatagram(const Socket& socket, const KernelAddress& peer);

// Discards what strangers have sent, up to what the peer has sent next. Called whenever a datagram
// was taken out of a queue that may hold more of strangers.
void DiscardStrangers(const Socket& socket);

}  // namespace Posix

// How a datagram socket that is bound to one of this machine's addresses receives what is sent to
// its groups, and the broadcasts of the address's interface.
//
// The kernel gives such a socket only what is sent to that very address; Winsock's gets all of it.
// To bind it to all addresses instead would take the port from the machine's other addresses, and
// their datagrams with it. So each further destination has an auxiliary socket of the kernel, which
// is bound to the group or the broadcast address. Those share their ports, each gets a copy, and
// they are in nobody's way who is bound to an address. The socket and its auxiliaries are read as
// one queue, see MergedQueue.h.
//
// A socket on all addresses receives everything itself and has no auxiliaries. Neither have those
// on a loopback address or an IPv6 address before they join a group, since nobody broadcasts there.
#pragma once

#include "sockets/KernelAddress.h"
#include "sockets/Reception.h"

namespace Posix {

// Each function here results in a Winsock error or 0.

// For bind, before the socket is bound to the address: opens all that is needed then, so that a
// bind call which fails for want of it can be repeated.
int OpenAuxiliaries(const Socket& socket, const KernelAddress& address, AuxiliarySockets& opened);
// For bind, when that is done.
int BindAuxiliaries(const Socket& socket, const KernelAddress& address, AuxiliarySockets& opened);

// For a socket that is bound to one address, by a caller who has the lock; may throw
// std::bad_alloc.
int JoinByAuxiliary(const Socket& socket, Reception& reception, const GroupRequest& request);

// The socket has got a peer, whom alone it hears then, or with null has lost it.
int FollowPeer(const Socket& socket, const KernelAddress* peer);

}  // namespace Posix

// Lets a datagram socket that is bound to one local address receive the datagrams for its groups,
// and the broadcasts of the address's interface.
//
// The kernel delivers to such a socket only what is sent to that very address; Winsock delivers all
// of it. Binding it to the wildcard instead would take the port, and the datagrams, from the host's
// other addresses. So each further destination has an auxiliary kernel socket that is bound to the
// group or broadcast address. With SO_REUSEADDR the auxiliary sockets of several programs share a
// port and each get a copy, and they do not conflict with sockets that are bound to an address. The
// socket and its auxiliary sockets are read as one queue, see MergedQueue.h.
//
// A socket that is bound to the wildcard receives everything itself and has no auxiliary sockets.
// Neither has one on a loopback address or an IPv6 address before it joins a group, since these
// have no broadcasts.
#pragma once

#include "sockets/KernelAddress.h"
#include "sockets/Reception.h"

namespace Posix {

// All functions return a Winsock error or None.

// For bind, before a datagram socket is bound to the address: opens all sockets that will be
// needed, so that a bind call that fails for lack of one can be repeated.
WinsockError OpenAuxiliaries(const Socket& socket, const KernelAddress& address,
                             AuxiliarySockets& opened);
// For bind, once the socket is bound.
WinsockError BindAuxiliaries(const Socket& socket, const KernelAddress& address,
                             AuxiliarySockets& opened);

// For a socket that is bound to one address. The caller holds the lock. May throw std::bad_alloc.
WinsockError JoinByAuxiliary(const Socket& socket, Reception& reception,
                             const GroupRequest& request);

// For connect, once the socket has a peer: gives its groups auxiliary sockets, and lets all of
// these receive from the peer only. With null, once the peer is removed: from anybody again.
WinsockError FollowPeer(const Socket& socket, const KernelAddress* peer);

}  // namespace Posix

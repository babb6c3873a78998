// Which broadcasts concern an address.
#pragma once

#include "sockets/KernelAddress.h"

#include <vector>

namespace Posix {

// An address that others send to, by one interface or, where that is 0, by any.
struct Destination {
    KernelAddress address;
    unsigned int interface;
};

// Those that come in by the interface that has the IPv4 address: the one to everybody and the one
// to the address's network. None for the loopback interface and others that do not broadcast. The
// descriptor is a socket's, of whatever kind; may throw std::bad_alloc.
std::vector<Destination> BroadcastsAt(int descriptor, const KernelAddress& address);

}  // namespace Posix

// The broadcast addresses that belong to a local address.
#pragma once

#include "sockets/KernelAddress.h"

#include <vector>

namespace Posix {

// An address that others send to, on one interface, or on any if that is 0.
struct Destination {
    KernelAddress address;
    unsigned int interface;
};

// Returns those of the interface that has the IPv4 address: the broadcast to everybody and the one
// to the address's network; none for the loopback interface and others that do not broadcast. The
// descriptor is any socket's. May throw std::bad_alloc.
std::vector<Destination> BroadcastsAt(int descriptor, const KernelAddress& address);

}  // namespace Posix

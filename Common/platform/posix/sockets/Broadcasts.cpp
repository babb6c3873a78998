#include "sockets/Broadcasts.h"

#include <net/if.h>
#include <sys/ioctl.h>

#include <algorithm>

namespace Posix {

namespace {

in_addr_t AddressOf(const ifreq& interface) {
    return reinterpret_cast<const sockaddr_in&>(interface.ifr_addr).sin_addr.s_addr;
}

// The interfaces' names and IPv4 addresses. SIOCGIFCONF uses the caller's socket; getifaddrs would
// open a netlink socket of its own.
std::vector<ifreq> InterfaceAddresses(int descriptor) {
    ifconf list = {};
    if (::ioctl(descriptor, SIOCGIFCONF, &list) < 0) return {};
    std::vector<ifreq> interfaces(static_cast<std::size_t>(list.ifc_len) / sizeof(ifreq));
    list.ifc_req = interfaces.data();
    // What is not filled, since an interface has gone meanwhile, has the address of none.
    ::ioctl(descriptor, SIOCGIFCONF, &list);
    return interfaces;
}

// Returns 0 if the interface does not broadcast, or has disappeared.
unsigned int IndexIfBroadcasting(int descriptor, ifreq interface) {
    if (::ioctl(descriptor, SIOCGIFFLAGS, &interface) < 0) return 0;
    if ((interface.ifr_flags & IFF_BROADCAST) == 0) return 0;
    if (::ioctl(descriptor, SIOCGIFINDEX, &interface) < 0) return 0;
    return static_cast<unsigned int>(interface.ifr_ifindex);
}

// The last address of the interface's network.
in_addr_t DirectedBroadcast(int descriptor, ifreq interface) {
    const in_addr_t own = AddressOf(interface);
    if (::ioctl(descriptor, SIOCGIFNETMASK, &interface) < 0) return INADDR_BROADCAST;
    return own | ~AddressOf(interface);
}

Destination Broadcast(in_addr_t address, unsigned int interface) {
    Destination broadcast = {{}, interface};
    broadcast.address.ipv4.sin_family = AF_INET;
    broadcast.address.ipv4.sin_addr.s_addr = address;
    return broadcast;
}

std::vector<Destination> BroadcastsBy(int descriptor, const ifreq& interface) {
    const unsigned int index = IndexIfBroadcasting(descriptor, interface);
    if (index == 0) return {};
    std::vector<Destination> broadcasts = {Broadcast(INADDR_BROADCAST, index)};
    const in_addr_t directed = DirectedBroadcast(descriptor, interface);
    const bool isAnother = directed != INADDR_BROADCAST && directed != AddressOf(interface);
    if (isAnother) broadcasts.push_back(Broadcast(directed, index));
    return broadcasts;
}

bool IsOfLoopback(const KernelAddress& address) {
    return ntohl(address.ipv4.sin_addr.s_addr) >> IN_CLASSA_NSHIFT == IN_LOOPBACKNET;
}

}  // namespace

std::vector<Destination> BroadcastsAt(int descriptor, const KernelAddress& address) {
    if (address.any.sa_family != AF_INET || IsOfLoopback(address)) return {};
    const std::vector<ifreq> interfaces = InterfaceAddresses(descriptor);
    const auto found = std::find_if(interfaces.begin(), interfaces.end(), [&](const ifreq& each) {
        return AddressOf(each) == address.ipv4.sin_addr.s_addr;
    });
    if (found == interfaces.end()) return {};
    return BroadcastsBy(descriptor, *found);
}

}  // namespace Posix

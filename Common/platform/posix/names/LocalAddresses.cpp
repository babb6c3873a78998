#include "names/LocalAddresses.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <strings.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace Posix {

namespace {

struct InterfaceListFreer {
    void operator()(ifaddrs* list) const noexcept { ::freeifaddrs(list); }
};
using InterfaceList = std::unique_ptr<ifaddrs, InterfaceListFreer>;

InterfaceList Interfaces() noexcept {
    ifaddrs* list = nullptr;
    return InterfaceList(::getifaddrs(&list) == 0 ? list : nullptr);
}

bool IsUp(const ifaddrs& interface) noexcept {
    return (interface.ifa_flags & IFF_UP) != 0;
}

bool IsLoopback(const ifaddrs& interface) noexcept {
    return (interface.ifa_flags & IFF_LOOPBACK) != 0;
}

void AppendAddress(const ifaddrs& interface, int family, std::vector<KernelAddress>& addresses) {
    if (interface.ifa_addr == nullptr || interface.ifa_addr->sa_family != family) return;
    KernelAddress address = {};
    const bool ipv6 = family == AF_INET6;
    std::memcpy(&address, interface.ifa_addr, ipv6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in));
    addresses.push_back(address);
}

void AppendAddresses(const ifaddrs* first, int family, bool loopback,
                     std::vector<KernelAddress>& addresses) {
    for (const ifaddrs* next = first; next != nullptr; next = next->ifa_next) {
        if (IsUp(*next) && IsLoopback(*next) == loopback) AppendAddress(*next, family, addresses);
    }
}

KernelAddress Ipv4Loopback() noexcept {
    KernelAddress address = {};
    address.ipv4.sin_family = AF_INET;
    address.ipv4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

}  // namespace

bool IsLocalHostName(const char* name, HostNameText own) noexcept {
    if (::strcasecmp(name, own.text) == 0) return true;
    own.text[std::strcspn(own.text, ".")] = '\0';
    return own.text[0] != '\0' && ::strcasecmp(name, own.text) == 0;
}

std::vector<KernelAddress> LocalAddresses(int family) {
    std::vector<KernelAddress> addresses;
    const InterfaceList interfaces = Interfaces();
    for (const bool loopback : {false, true}) {
        if (!addresses.empty()) break;
        if (family != AF_INET) AppendAddresses(interfaces.get(), AF_INET6, loopback, addresses);
        if (family != AF_INET6) AppendAddresses(interfaces.get(), AF_INET, loopback, addresses);
    }
    if (addresses.empty() && family != AF_INET6) addresses.push_back(Ipv4Loopback());
    return addresses;
}

}  // namespace Posix

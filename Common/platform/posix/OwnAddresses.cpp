#include "OwnAddresses.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <strings.h>

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

bool IsReachableIpv4(const ifaddrs& interface) noexcept {
    const bool up = (interface.ifa_flags & IFF_UP) != 0;
    const bool loopback = (interface.ifa_flags & IFF_LOOPBACK) != 0;
    return up && !loopback && interface.ifa_addr != nullptr &&
           interface.ifa_addr->sa_family == AF_INET;
}

}  // namespace

bool IsOwnName(const char* name, HostNameText own) noexcept {
    if (::strcasecmp(name, own.text) == 0) return true;
    own.text[std::strcspn(own.text, ".")] = '\0';
    return own.text[0] != '\0' && ::strcasecmp(name, own.text) == 0;
}

std::vector<in_addr> OwnIpv4Addresses() {
    std::vector<in_addr> addresses;
    const InterfaceList interfaces = Interfaces();
    for (const ifaddrs* next = interfaces.get(); next != nullptr; next = next->ifa_next) {
        if (!IsReachableIpv4(*next)) continue;
        sockaddr_in address = {};
        std::memcpy(&address, next->ifa_addr, sizeof address);
        addresses.push_back(address.sin_addr);
    }
    if (addresses.empty()) addresses.push_back({htonl(INADDR_LOOPBACK)});
    return addresses;
}

}  // namespace Posix

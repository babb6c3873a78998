#include "names/LocalAddresses.h"

#include "errors/Errors.h"
#include "names/NameCase.h"
#include "names/NumericHosts.h"
#include "names/ResolverErrors.h"
#include "system/Descriptors.h"
#include "system/HostName.h"

#include <ifaddrs.h>
#include <net/if.h>

#include <algorithm>
#include <cerrno>
#include <memory>

namespace Posix {

namespace {

struct InterfaceListFreer {
    void operator()(ifaddrs* list) const noexcept { ::freeifaddrs(list); }
};
using InterfaceList = std::unique_ptr<ifaddrs, InterfaceListFreer>;

// A process that a sandbox keeps from listing the interfaces has none; only a shortage is an error.
// Cancellation is deferred, which delays it little: getifaddrs would leak its netlink socket and
// memory.
WinsockError ListInterfaces(InterfaceList& interfaces) noexcept {
    const CancellationGuard whole;
    ifaddrs* list = nullptr;
    const bool listed = ::getifaddrs(&list) == 0;
    if (listed) interfaces.reset(list);
    return listed || !IsShortage(errno) ? WinsockError::None : WinsockFromErrno(errno);
}

bool IsUp(const ifaddrs& interface) noexcept {
    return (interface.ifa_flags & IFF_UP) != 0;
}

bool IsLoopback(const ifaddrs& interface) noexcept {
    return (interface.ifa_flags & IFF_LOOPBACK) != 0;
}

void AppendAddress(const ifaddrs& interface, int family, std::vector<KernelAddress>& addresses) {
    if (interface.ifa_addr == nullptr || interface.ifa_addr->sa_family != family) return;
    addresses.push_back(CopyAddress(interface.ifa_addr));
}

void AppendAddresses(const ifaddrs* first, int family, bool loopback,
                     std::vector<KernelAddress>& addresses) {
    for (const ifaddrs* next = first; next != nullptr; next = next->ifa_next) {
        if (IsUp(*next) && IsLoopback(*next) == loopback) AppendAddress(*next, family, addresses);
    }
}

bool IsNumeric(const char* name) noexcept {
    KernelAddress address;
    return ParseNumericHost(name, address);
}

}  // namespace

bool IsLocalHostName(const char* name) noexcept {
    if (IsLocalhost(name) || IsNumeric(name)) return false;
    HostNameText own;
    HostName(own);  // empty if there is none, which no name equals
    const std::string_view whole = own.text;
    const std::string_view label = whole.substr(0, whole.find('.'));
    return SameName(name, whole) || (!label.empty() && SameName(name, label));
}

bool IsLocalhost(const char* name) noexcept {
    return SameName(name, "localhost");
}

bool IsLoopback(const in_addr& address) noexcept {
    return ntohl(address.s_addr) >> IN_CLASSA_NSHIFT == IN_LOOPBACKNET;
}

bool IsLoopback(const KernelAddress& address) noexcept {
    if (address.any.sa_family == AF_INET) return IsLoopback(address.ipv4.sin_addr);
    return IN6_IS_ADDR_LOOPBACK(&address.ipv6.sin6_addr);
}

bool IsLoopbackOnly(const std::vector<KernelAddress>& addresses) noexcept {
    const auto isLoopback = [](const KernelAddress& address) { return IsLoopback(address); };
    return std::all_of(addresses.begin(), addresses.end(), isLoopback);
}

KernelAddress Ipv4Loopback() noexcept {
    KernelAddress address = {};
    address.ipv4.sin_family = AF_INET;
    address.ipv4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

WinsockError FindLocalAddresses(int family, std::vector<KernelAddress>& addresses) {
    InterfaceList interfaces;
    if (const auto error = ListInterfaces(interfaces); IsError(error)) return error;
    for (const bool loopback : {false, true}) {
        if (!addresses.empty()) break;
        if (family != AF_INET) AppendAddresses(interfaces.get(), AF_INET6, loopback, addresses);
        if (family != AF_INET6) AppendAddresses(interfaces.get(), AF_INET, loopback, addresses);
    }
    if (addresses.empty() && family != AF_INET6) addresses.push_back(Ipv4Loopback());
    return WinsockError::None;
}

}  // namespace Posix

#include "sockets/GroupRequest.h"

#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "system/Descriptors.h"

#include <net/if.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>

namespace Posix {

static_assert(sizeof(Winsock::MembershipIpv4) == sizeof(ip_mreq));
static_assert(offsetof(Winsock::MembershipIpv4, group) == 0);
static_assert(offsetof(ip_mreq, imr_multiaddr) == 0);
static_assert(offsetof(Winsock::MembershipIpv4, interfaceAddress) ==
              offsetof(ip_mreq, imr_interface));
static_assert(sizeof(Winsock::MembershipIpv6) == sizeof(ipv6_mreq));
static_assert(offsetof(Winsock::MembershipIpv6, group) == 0);
static_assert(offsetof(ipv6_mreq, ipv6mr_multiaddr) == 0);
static_assert(offsetof(Winsock::MembershipIpv6, interfaceIndex) ==
              offsetof(ipv6_mreq, ipv6mr_interface));

namespace {

// Winsock's numbers of these options mean something else to the kernel.
int KernelOption(int level, bool join) {
    if (level == IPPROTO_IPV6) return join ? IPV6_JOIN_GROUP : IPV6_LEAVE_GROUP;
    return join ? IP_ADD_MEMBERSHIP : IP_DROP_MEMBERSHIP;
}

// Returns false with errno if the kernel refuses.
bool Change(int descriptor, const GroupRequest& request, bool join) {
    const socklen_t size = request.level == IPPROTO_IPV6 ? sizeof(ipv6_mreq) : sizeof(ip_mreq);
    return ::setsockopt(descriptor, request.level, KernelOption(request.level, join),
                        request.bytes.data(), size) == 0;
}

// A group that the socket has joined already cannot be joined again. One that it has not joined
// cannot be left, even if no interface exists for it.
WinsockError ErrorOfJoining(int error) {
    return error == EADDRINUSE ? WinsockError::AddressNotAvailable : WinsockFromErrno(error);
}
WinsockError ErrorOfLeaving(int error) {
    const bool notJoined = error == EADDRNOTAVAIL || error == ENODEV;
    return notJoined ? WinsockError::Invalid : WinsockFromErrno(error);
}

struct InterfaceListFreer {
    void operator()(struct if_nameindex* list) const noexcept { ::if_freenameindex(list); }
};
using InterfaceList = std::unique_ptr<struct if_nameindex, InterfaceListFreer>;

// getsourcefilter succeeds only for an existing membership.
bool IsMemberOn(int descriptor, unsigned int interface, const KernelAddress& group) {
    std::uint32_t mode = 0;
    std::uint32_t sources = 0;
    return ::getsourcefilter(descriptor, interface, &group.any, sizeof group.ipv6, &mode, &sources,
                             nullptr) == 0;
}

}  // namespace

WinsockError JoinGroup(int descriptor, const GroupRequest& request) noexcept {
    return Change(descriptor, request, true) ? WinsockError::None : ErrorOfJoining(errno);
}

WinsockError LeaveGroup(int descriptor, const GroupRequest& request) noexcept {
    return Change(descriptor, request, false) ? WinsockError::None : ErrorOfLeaving(errno);
}

// Tries to join, since the kernel has no plainer way to ask.
bool IsMember(int descriptor, const GroupRequest& request) noexcept {
    if (!Change(descriptor, request, true)) return errno == EADDRINUSE;
    Change(descriptor, request, false);
    return false;
}

KernelAddress GroupOf(const GroupRequest& request) noexcept {
    KernelAddress group = {};
    if (request.level == IPPROTO_IPV6) {
        group.ipv6.sin6_family = AF_INET6;
        std::memcpy(&group.ipv6.sin6_addr, request.bytes.data(), sizeof group.ipv6.sin6_addr);
    } else {
        group.ipv4.sin_family = AF_INET;
        std::memcpy(&group.ipv4.sin_addr, request.bytes.data(), sizeof group.ipv4.sin_addr);
    }
    return group;
}

unsigned int InterfaceOfGroup(int descriptor, const KernelAddress& group) noexcept {
    const CancellationGuard whole;
    const InterfaceList interfaces(::if_nameindex());
    const auto* interface = interfaces.get();
    while (interface != nullptr && interface->if_index != 0) {
        if (IsMemberOn(descriptor, interface->if_index, group)) return interface->if_index;
        ++interface;
    }
    return 0;
}

}  // namespace Posix

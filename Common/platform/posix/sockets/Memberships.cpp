#include "sockets/Memberships.h"

#include <Platform/Winsock.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstddef>

#include "errors/Errors.h"

namespace Posix {

static_assert(sizeof(Winsock::MembershipIpv4) == sizeof(ip_mreq));
static_assert(offsetof(Winsock::MembershipIpv4, group) == offsetof(ip_mreq, imr_multiaddr));
static_assert(offsetof(Winsock::MembershipIpv4, interfaceAddress) ==
              offsetof(ip_mreq, imr_interface));
static_assert(sizeof(Winsock::MembershipIpv6) == sizeof(ipv6_mreq));
static_assert(offsetof(Winsock::MembershipIpv6, group) == offsetof(ipv6_mreq, ipv6mr_multiaddr));
static_assert(offsetof(Winsock::MembershipIpv6, interfaceIndex) ==
              offsetof(ipv6_mreq, ipv6mr_interface));

namespace {

int LengthOfRequest(int level) {
    return level == Winsock::LevelIpv6 ? sizeof(ipv6_mreq) : sizeof(ip_mreq);
}

// The kernel would take a request of IPv4 on a socket of IPv6.
int MembershipError(const Socket& socket, int level, int length) {
    const bool ofSocketsFamily = socket.Has(Flag::Ipv6) == (level == Winsock::LevelIpv6);
    if (!socket.Has(Flag::Datagram) || !ofSocketsFamily) return WinsockError::Invalid;
    return length < LengthOfRequest(level) ? WinsockError::Fault : 0;
}

// The options' numbers mean something else to the kernel.
int KernelOption(int level, bool join) {
    if (level == Winsock::LevelIpv6) return join ? IPV6_JOIN_GROUP : IPV6_LEAVE_GROUP;
    return join ? IP_ADD_MEMBERSHIP : IP_DROP_MEMBERSHIP;
}

// A group that is joined already is no address to join once more; one that is not cannot be left,
// even where no interface could have it.
int ErrorOfJoining(int error) {
    return error == EADDRINUSE ? WinsockError::AddressNotAvailable : WinsockFromErrno(error);
}
int ErrorOfLeaving(int error) {
    const bool notJoined = error == EADDRNOTAVAIL || error == ENODEV;
    return notJoined ? WinsockError::Invalid : WinsockFromErrno(error);
}

}  // namespace

bool IsMembershipOption(int level, int option) noexcept {
    const bool ofGroups =
        option == Winsock::OptionAddMembership || option == Winsock::OptionDropMembership;
    return ofGroups && (level == Winsock::LevelIpv4 || level == Winsock::LevelIpv6);
}

int SetMembership(const Socket& socket, int level, int option, const char* value, int length) {
    if (const int error = MembershipError(socket, level, length)) return Fail(error);
    const bool join = option == Winsock::OptionAddMembership;
    const auto size = static_cast<socklen_t>(LengthOfRequest(level));
    // The levels have the protocols' numbers, on both systems.
    if (::setsockopt(socket.descriptor, level, KernelOption(level, join), value, size) == 0) {
        return Succeed();
    }
    return Fail(join ? ErrorOfJoining(errno) : ErrorOfLeaving(errno));
}

}  // namespace Posix

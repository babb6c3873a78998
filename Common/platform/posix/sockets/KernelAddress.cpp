#include "sockets/KernelAddress.h"

#include "Platform/Winsock.h"
#include "errors/Errors.h"

#include <cstddef>
#include <cstring>
#include <utility>

namespace Posix {

static_assert(sizeof(sockaddr_in) == sizeof(Winsock::AddressIpv4));
static_assert(sizeof(sockaddr_in6) == sizeof(Winsock::AddressIpv6));
static_assert(offsetof(sockaddr_in, sin_port) == offsetof(Winsock::AddressIpv4, port));
static_assert(offsetof(sockaddr_in, sin_addr) == offsetof(Winsock::AddressIpv4, address));
static_assert(offsetof(sockaddr_in6, sin6_port) == offsetof(Winsock::AddressIpv6, port));
static_assert(offsetof(sockaddr_in6, sin6_flowinfo) ==
              offsetof(Winsock::AddressIpv6, flowInformation));
static_assert(offsetof(sockaddr_in6, sin6_addr) == offsetof(Winsock::AddressIpv6, address));
static_assert(offsetof(sockaddr_in6, sin6_scope_id) == offsetof(Winsock::AddressIpv6, scope));
static_assert(offsetof(sockaddr_in, sin_port) == offsetof(sockaddr_in6, sin6_port));
static_assert(sizeof(sa_family_t) == sizeof(unsigned short));

namespace {

unsigned short FamilyNumber(const void* address) noexcept {
    unsigned short number = 0;
    std::memcpy(&number, address, sizeof number);
    return number;
}

void CopyFromWinsock(const AddressFamily& family, const void* address,
                     KernelAddress& result) noexcept {
    std::memcpy(&result, address, family.addressLength);
    result.any.sa_family = family.kernel;
}

}  // namespace

WinsockError KernelFromWinsock(const Socket& socket, const void* address, int length,
                               KernelAddress& result) noexcept {
    const AddressFamily& family = FamilyOf(socket);
    if (address == nullptr || std::cmp_less(length, family.addressLength)) {
        return WinsockError::Fault;
    }
    if (FamilyNumber(address) != family.winsock) return WinsockError::AddressFamilyNotSupported;
    CopyFromWinsock(family, address, result);
    return WinsockError::None;
}

WinsockError KernelFromWinsock(const void* address, int length, KernelAddress& result) noexcept {
    if (address == nullptr || length < int{sizeof(unsigned short)}) return WinsockError::Fault;
    const AddressFamily* const family = FamilyFromWinsock(FamilyNumber(address));
    if (family == nullptr) return WinsockError::AddressFamilyNotSupported;
    if (std::cmp_less(length, family->addressLength)) return WinsockError::Fault;
    CopyFromWinsock(*family, address, result);
    return WinsockError::None;
}

bool HasRoomForAddress(const Socket& socket, const void* address, const int* length) noexcept {
    return address != nullptr && length != nullptr &&
           std::cmp_greater_equal(*length, FamilyOf(socket).addressLength);
}

void WinsockFromKernel(const Socket& socket, const KernelAddress& source, void* address,
                       int* length) noexcept {
    const AddressFamily& family = FamilyOf(socket);
    WinsockFromKernel(family, source, address);
    *length = static_cast<int>(family.addressLength);
}

void WinsockFromKernel(const AddressFamily& family, const KernelAddress& source,
                       void* address) noexcept {
    std::memcpy(address, &source, family.addressLength);
    std::memcpy(address, &family.winsock, sizeof family.winsock);
}

KernelAddress CopyAddress(const sockaddr* source) noexcept {
    KernelAddress address = {};
    std::memcpy(&address, source, IpFamily(source->sa_family == AF_INET6).addressLength);
    return address;
}

bool IsWildcard(const KernelAddress& address) noexcept {
    if (address.any.sa_family == AF_INET) return address.ipv4.sin_addr.s_addr == INADDR_ANY;
    return IN6_IS_ADDR_UNSPECIFIED(&address.ipv6.sin6_addr);
}

std::uint16_t PortOf(const KernelAddress& address) noexcept {
    return ntohs(address.ipv4.sin_port);  // at the same place in both families
}

KernelAddress WithPort(KernelAddress address, std::uint16_t port) noexcept {
    address.ipv4.sin_port = htons(port);
    return address;
}

bool SameHost(const KernelAddress& left, const KernelAddress& right) noexcept {
    if (left.any.sa_family == AF_INET) {
        return left.ipv4.sin_addr.s_addr == right.ipv4.sin_addr.s_addr;
    }
    return std::memcmp(&left.ipv6.sin6_addr, &right.ipv6.sin6_addr, sizeof(in6_addr)) == 0 &&
           left.ipv6.sin6_scope_id == right.ipv6.sin6_scope_id;
}

bool LocalAddress(const Socket& socket, KernelAddress& address) noexcept {
    socklen_t length = sizeof address;
    return ::getsockname(socket.descriptor, &address.any, &length) == 0;
}

bool PeerAddress(const Socket& socket, KernelAddress& address) noexcept {
    socklen_t length = sizeof address;
    return ::getpeername(socket.descriptor, &address.any, &length) == 0;
}

bool IntendedPeer(const Socket& socket, KernelAddress& address) noexcept {
    socklen_t length = FamilyOf(socket).addressLength;
    return ::getsockopt(socket.descriptor, SOL_SOCKET, SO_PEERNAME, &address.any, &length) == 0;
}

bool BindTo(const Socket& socket, const KernelAddress& address) noexcept {
    return ::bind(socket.descriptor, &address.any, FamilyOf(socket).addressLength) == 0;
}

bool ConnectTo(const Socket& socket, const KernelAddress& peer) {
    return ::connect(socket.descriptor, &peer.any, FamilyOf(socket).addressLength) == 0;
}

bool ConnectToNobody(const Socket& socket) {
    KernelAddress nobody = {};
    nobody.any.sa_family = AF_UNSPEC;
    return ConnectTo(socket, nobody);
}

}  // namespace Posix

#include "sockets/KernelAddress.h"

#include "Platform/Winsock.h"
#include "errors/Errors.h"

#include <cstddef>
#include <cstring>

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
static_assert(sizeof(sa_family_t) == sizeof(unsigned short));

namespace {

unsigned short WinsockFamily(const Socket& socket) noexcept {
    return socket.Has(Flag::Ipv6) ? Winsock::FamilyIpv6 : Winsock::FamilyIpv4;
}

}  // namespace

int AddressLength(const Socket& socket) noexcept {
    return socket.Has(Flag::Ipv6) ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
}

int KernelFromWinsock(const Socket& socket, const void* address, int length,
                      KernelAddress& result) noexcept {
    if (address == nullptr || length < AddressLength(socket)) return WinsockError::Fault;
    unsigned short family = 0;
    std::memcpy(&family, address, sizeof family);
    if (family != WinsockFamily(socket)) return WinsockError::AddressFamilyNotSupported;
    std::memcpy(&result, address, static_cast<std::size_t>(AddressLength(socket)));
    result.any.sa_family = socket.Has(Flag::Ipv6) ? AF_INET6 : AF_INET;
    return 0;
}

bool HasRoomForAddress(const Socket& socket, const void* address, const int* length) noexcept {
    return address != nullptr && length != nullptr && *length >= AddressLength(socket);
}

void WinsockFromKernel(const Socket& socket, const KernelAddress& source, void* address,
                       int* length) noexcept {
    const unsigned short family = WinsockFamily(socket);
    std::memcpy(address, &source, static_cast<std::size_t>(AddressLength(socket)));
    std::memcpy(address, &family, sizeof family);
    *length = AddressLength(socket);
}

bool IsWildcard(const KernelAddress& address) noexcept {
    if (address.any.sa_family == AF_INET) return address.ipv4.sin_addr.s_addr == INADDR_ANY;
    return std::memcmp(&address.ipv6.sin6_addr, &in6addr_any, sizeof in6addr_any) == 0;
}

std::uint16_t PortOf(const KernelAddress& address) noexcept {
    return ntohs(address.any.sa_family == AF_INET ? address.ipv4.sin_port : address.ipv6.sin6_port);
}

KernelAddress WithPort(KernelAddress address, std::uint16_t port) noexcept {
    auto& field = address.any.sa_family == AF_INET ? address.ipv4.sin_port : address.ipv6.sin6_port;
    field = htons(port);
    return address;
}

bool SameHost(const KernelAddress& left, const KernelAddress& right) noexcept {
    if (left.any.sa_family != right.any.sa_family) return false;
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
    auto length = static_cast<socklen_t>(AddressLength(socket));
    return ::getsockopt(socket.descriptor, SOL_SOCKET, SO_PEERNAME, &address.any, &length) == 0;
}

bool BindTo(const Socket& socket, const KernelAddress& address) noexcept {
    const auto length = static_cast<socklen_t>(AddressLength(socket));
    return ::bind(socket.descriptor, &address.any, length) == 0;
}

bool ConnectTo(const Socket& socket, const KernelAddress& peer) {
    const auto length = static_cast<socklen_t>(AddressLength(socket));
    return ::connect(socket.descriptor, &peer.any, length) == 0;
}

bool ConnectToNobody(const Socket& socket) {
    KernelAddress nobody = {};
    nobody.any.sa_family = AF_UNSPEC;
    return ConnectTo(socket, nobody);
}

}  // namespace Posix

// Converts socket addresses between Winsock and the kernel. The structures differ only in the
// numbers of the families.
#pragma once

#include "sockets/AddressFamily.h"
#include "sockets/SocketTable.h"

#include <netinet/in.h>
#include <sys/socket.h>

namespace Posix {

// An IPv4 or IPv6 address in the kernel's form.
union KernelAddress {
    sockaddr any;
    sockaddr_in ipv4;
    sockaddr_in6 ipv6;
};

inline const AddressFamily& FamilyOf(const Socket& socket) noexcept {
    return IpFamily(socket.Has(Flag::Ipv6));
}
inline const AddressFamily& FamilyOf(const KernelAddress& address) noexcept {
    return IpFamily(address.any.sa_family == AF_INET6);
}

// Convert an address that the caller passes; the first accepts only the family of the socket.
// Return a Winsock error or None.
WinsockError KernelFromWinsock(const Socket& socket, const void* address, int length,
                               KernelAddress& result) noexcept;
WinsockError KernelFromWinsock(const void* address, int length, KernelAddress& result) noexcept;

// Whether the caller's buffer has room for an address of the socket's family.
bool HasRoomForAddress(const Socket& socket, const void* address, const int* length) noexcept;

// Writes an address of the socket's family to the caller's buffer, which must be large enough.
void WinsockFromKernel(const Socket& socket, const KernelAddress& source, void* address,
                       int* length) noexcept;

// Writes an address of the family with Winsock's number of it.
void WinsockFromKernel(const AddressFamily& family, const KernelAddress& source,
                       void* address) noexcept;

// Copies an IPv4 or IPv6 address that the system reports.
KernelAddress CopyAddress(const sockaddr* source) noexcept;

bool IsWildcard(const KernelAddress& address) noexcept;
std::uint16_t PortOf(const KernelAddress& address) noexcept;
KernelAddress WithPort(KernelAddress address, std::uint16_t port) noexcept;
// Of two addresses of one family.
bool SameHost(const KernelAddress& left, const KernelAddress& right) noexcept;

// The addresses of the socket's two endpoints; return false with errno if the kernel does not
// report them.
bool LocalAddress(const Socket& socket, KernelAddress& address) noexcept;
bool PeerAddress(const Socket& socket, KernelAddress& address) noexcept;
// The peer of a stream that is still connecting, for which the kernel refuses getpeername.
bool IntendedPeer(const Socket& socket, KernelAddress& address) noexcept;

// The kernel's own calls; return false with errno if it refuses.
bool BindTo(const Socket& socket, const KernelAddress& address) noexcept;
bool ConnectTo(const Socket& socket, const KernelAddress& peer);
// Removes the peer (connect with AF_UNSPEC), and with it the local address and port that the kernel
// has chosen.
bool ConnectToNobody(const Socket& socket);

}  // namespace Posix

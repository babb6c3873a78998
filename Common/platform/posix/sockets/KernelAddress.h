// Socket addresses on their way to the kernel and back. The systems' structures differ in the
// numbers of the families only.
#pragma once

#include "sockets/SocketTable.h"

#include <netinet/in.h>
#include <sys/socket.h>

namespace Posix {

// An IPv4 or IPv6 address as the kernel takes and gives it.
union KernelAddress {
    sockaddr any;
    sockaddr_in ipv4;
    sockaddr_in6 ipv6;
};

// The length of the addresses of the socket's family, here and in Winsock.
int AddressLength(const Socket& socket) noexcept;

// The kernel's form of an address that the caller gives for the socket; the result is a Winsock
// error or 0.
int KernelFromWinsock(const Socket& socket, const void* address, int length,
                      KernelAddress& result) noexcept;

// Whether the caller's room for an address of the socket's family is large enough.
bool HasRoomForAddress(const Socket& socket, const void* address, const int* length) noexcept;

// Writes an address of the socket's family to the caller's room, which must be large enough.
void WinsockFromKernel(const Socket& socket, const KernelAddress& source, void* address,
                       int* length) noexcept;

bool IsWildcard(const KernelAddress& address) noexcept;
std::uint16_t PortOf(const KernelAddress& address) noexcept;
KernelAddress WithPort(KernelAddress address, std::uint16_t port) noexcept;
bool SameHost(const KernelAddress& left, const KernelAddress& right) noexcept;

// The addresses of the socket's two ends; false with errno when the kernel does not tell.
bool LocalAddress(const Socket& socket, KernelAddress& address) noexcept;
bool PeerAddress(const Socket& socket, KernelAddress& address) noexcept;
// The same of a stream that is still connecting.
bool IntendedPeer(const Socket& socket, KernelAddress& address) noexcept;

// The kernel's own calls; false with errno when it refuses.
bool BindTo(const Socket& socket, const KernelAddress& address) noexcept;
bool ConnectTo(const Socket& socket, const KernelAddress& peer);
// Takes the peer away, and with it what the kernel has chosen for the way to it.
bool ConnectToNobody(const Socket& socket);

}  // namespace Posix

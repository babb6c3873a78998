// The local host's names and the addresses of its interfaces.
#pragma once

#include "sockets/KernelAddress.h"

#include <vector>

namespace Posix {

// Whether the name, in any case, is the local host's whole name or its first label. Names of the
// loopback interface and addresses are not, whatever the host is called.
bool IsLocalHostName(const char* name) noexcept;

// Whether the name, in any case, is that of the loopback interface.
bool IsLocalhost(const char* name) noexcept;

bool IsLoopback(const in_addr& address) noexcept;
bool IsLoopback(const KernelAddress& address) noexcept;
bool IsLoopbackOnly(const std::vector<KernelAddress>& addresses) noexcept;

KernelAddress Ipv4Loopback() noexcept;

// Finds the addresses of the interfaces that are up, IPv6 before IPv4; those of the loopback
// interface only if there is no other, and 127.0.0.1 even if that is down. The family is AF_INET,
// AF_INET6, or AF_UNSPEC for both. Returns a Winsock error or None.
WinsockError FindLocalAddresses(int family, std::vector<KernelAddress>& addresses);

}  // namespace Posix

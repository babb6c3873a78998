// What this computer is called and which addresses its interfaces have.
#pragma once

#include "sockets/KernelAddress.h"

#include <vector>

namespace Posix {

// Whether the name, in any case, is this computer's whole name or its first label. What stands for
// the loopback interface, or is an address itself, is so whatever the computer is called.
bool IsLocalHostName(const char* name) noexcept;

// Whether it is the name of the loopback interface, in any case.
bool IsLocalhost(const char* name) noexcept;

bool IsLoopback(const in_addr& address) noexcept;
bool IsLoopback(const KernelAddress& address) noexcept;
bool IsLoopbackOnly(const std::vector<KernelAddress>& addresses) noexcept;

KernelAddress Ipv4Loopback() noexcept;

// The addresses of the interfaces that are up, IPv6 before IPv4; those of the loopback interface
// when there is no other. The family is the system's, or AF_UNSPEC for both. The result is a
// Winsock error or 0.
int FindLocalAddresses(int family, std::vector<KernelAddress>& addresses);

}  // namespace Posix

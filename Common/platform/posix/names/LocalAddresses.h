// What this computer is called and which addresses its interfaces have.
#pragma once

#include <vector>

#include "sockets/KernelAddress.h"
#include "system/HostName.h"

namespace Posix {

// Whether the name, in any case, is this computer's whole name or its first label.
bool IsLocalHostName(const char* name, HostNameText own) noexcept;

// The addresses of the interfaces that are up, IPv6 before IPv4; those of the loopback interface
// when there is no other. The family is the system's, or AF_UNSPEC for both.
std::vector<KernelAddress> LocalAddresses(int family);

}  // namespace Posix

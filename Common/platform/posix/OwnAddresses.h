// What this computer is called and which addresses its interfaces have.
#pragma once

#include <netinet/in.h>

#include <vector>

#include "HostName.h"

namespace Posix {

// Whether the name, in any case, is this computer's whole name or its first label.
bool IsOwnName(const char* name, HostNameText own) noexcept;

// The IPv4 addresses of the interfaces that are up; the loopback address when there is no other.
std::vector<in_addr> OwnIpv4Addresses();

}  // namespace Posix

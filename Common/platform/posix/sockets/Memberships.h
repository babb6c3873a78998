// Joins and leaves multicast groups.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// Whether the option joins or leaves a group.
bool IsMembershipOption(int level, int option) noexcept;

// The value must not be null.
int SetMembership(const Socket& socket, int level, int option, const char* value, int length);

}  // namespace Posix

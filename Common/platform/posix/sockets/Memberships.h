// Which groups' datagrams a socket receives.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// Whether the option joins or leaves a group.
bool IsMembershipOption(int level, int option) noexcept;

// The value is not null.
int SetMembership(const Socket& socket, int level, int option, const char* value, int length);

}  // namespace Posix

// Creates kernel sockets with Winsock's defaults.
#pragma once

namespace Posix {

// Returns a negative number with errno on failure, also if an option could not be set: without it
// the socket would silently behave differently from Winsock's.
int MakeDescriptor(bool ipv6, bool datagram);

}  // namespace Posix

// The kernel's sockets with what Winsock has otherwise than the kernel.
#pragma once

namespace Posix {

// Negative with errno when there is no such socket: one without a default would answer otherwise
// than Winsock's, and nobody would know.
int MakeDescriptor(bool ipv6, bool datagram);

}  // namespace Posix

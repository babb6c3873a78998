// The kernel's reuse option, which Winsock's option of the same name is not.
//
// Ended connections keep a port from being bound again for a minute here, but not on Winsock. The
// kernel's option overcomes that if both the ended connection and the newcomer carry it. While a
// stream is bound and nothing more it must not carry it: other processes' streams with the option
// could then be bound to the same port.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// False with errno when the kernel refuses.
bool SetKernelReuse(const Socket& socket, bool on) noexcept;

// Whether the option stays on whatever the caller asks for: a stream that got its port from bind
// and listens or is connected.
bool CarriesKernelReuse(const Socket& socket) noexcept;

// Called when a stream begins to listen or is connected. Accepted connections inherit the option.
void LetPortBeBoundAgain(const Socket& socket) noexcept;

}  // namespace Posix

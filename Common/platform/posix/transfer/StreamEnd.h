// How connections end.
//
// The kernel reports a reset or a timeout once, to whichever call asks first, and from then on an
// orderly end (recv returns 0), so the socket table remembers the former. Bytes that were received
// before the end are delivered first.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// Returns the connection's known end as Winsock's error number, or None.
WinsockError MarkedEnd(const Socket& socket) noexcept;

// Whether there are bytes to receive.
bool HasBytes(const Socket& socket);

// Returns the Winsock error for a transfer that failed with errno, and remembers an end of the
// connection.
WinsockError StreamError(const Socket& socket);

// The same for a receive call that returned 0; returns None for an orderly end, or an empty buffer.
WinsockError ErrorOfNothing(const Socket& socket);

}  // namespace Posix

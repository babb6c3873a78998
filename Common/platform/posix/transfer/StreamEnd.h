// How connections end.
//
// The kernel tells an end once, to whoever asks first, and pretends an orderly one from then on; so
// the socket table remembers it. What was received before the end is given first.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// The end that the connection is known to have met, as Winsock's error number, or 0.
int MarkedEnd(const Socket& socket) noexcept;

// Whether bytes wait to be received.
bool HasBytes(const Socket& socket);

// The answer to a transfer that failed with errno. Remembers the end that it met.
int StreamError(const Socket& socket);

// The same for a receive call that got nothing; 0 when nothing is what there was to get.
int ErrorOfNothing(const Socket& socket);

}  // namespace Posix

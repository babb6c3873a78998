// The datagrams of a socket and its auxiliaries, as if they were in one queue. For a socket without
// auxiliaries that is its own, and asking takes no call of the system.
#pragma once

#include "sockets/SocketTable.h"

#include <sys/socket.h>

namespace Posix {

// The descriptor that is readable when the queue has something to tell.
int DescriptorToWatch(const Socket& socket) noexcept;

// What poll tells of the queue, when it has told that of the descriptor to watch.
short EventsToRead(const Socket& socket, short told) noexcept;

// The descriptor of the kernel's queue whose first datagram is the first of all.
int FirstToRead(const Socket& socket) noexcept;

// The system's recvmsg, which waits for a datagram in the socket's own queue alone: where there are
// more it fails with EAGAIN, and the descriptor to watch is to be waited for.
ssize_t ReceiveFirst(const Socket& socket, msghdr& message, int flags);

}  // namespace Posix

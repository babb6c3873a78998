// The datagrams of a socket and its auxiliary sockets, read as one queue. A socket without
// auxiliary sockets has only its own, and that costs no system call.
#pragma once

#include "sockets/SocketTable.h"

#include <sys/socket.h>

namespace Posix {

// Returns the descriptor that polls as readable when the queue has a datagram or a report.
int DescriptorToWatch(const Socket& socket) noexcept;

// Returns the events of the whole queue: told, which poll has returned for the descriptor to watch,
// or what the poll set behind that descriptor holds.
short EventsToRead(const Socket& socket, short told) noexcept;

// Returns the descriptor of the kernel queue with the datagram that arrived first.
int FirstOfQueues(const Socket& socket) noexcept;
inline int FirstToRead(const Socket& socket) noexcept {
    return socket.Has(Flag::Reception) ? FirstOfQueues(socket) : socket.descriptor;
}

// Calls recvmsg on that descriptor. Only blocks if the socket has a single queue; otherwise it
// fails with EAGAIN, and the caller waits for the descriptor to watch.
ssize_t ReceiveFirstOfQueues(const Socket& socket, msghdr& message, int flags);
inline ssize_t ReceiveFirst(const Socket& socket, msghdr& message, int flags) {
    return socket.Has(Flag::Reception) ? ReceiveFirstOfQueues(socket, message, flags)
                                       : ::recvmsg(socket.descriptor, &message, flags);
}

}  // namespace Posix

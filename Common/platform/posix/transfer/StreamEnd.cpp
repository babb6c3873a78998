#include "transfer/StreamEnd.h"

#include "errors/Errors.h"
#include "sockets/BooleanOption.h"
#include "sockets/ErrorQueue.h"
#include "sockets/TcpState.h"
#include "system/Descriptors.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

namespace Posix {

namespace {

WinsockError MarkEnd(const Socket& socket, WinsockError error) {
    socket.entry->Set(error == WinsockError::ConnectionReset ? Flag::Reset : Flag::Aborted);
    return error;
}

// The errors by which the kernel reports an end. A living connection can have each of them too: a
// packet filter refused a packet, an ICMP error came in, this side has shut down its half.
bool MayTellEnd(int error) {
    switch (error) {
        case ECONNRESET:
        case ECONNABORTED:
        case EPIPE:
        case ETIMEDOUT:
            return true;
        default:
            return MayBeReport(error);
    }
}

// Connections of which one half is shut down, or both but not acknowledged, are in other states.
bool IsTornDown(const Socket& socket) {
    return TcpState(socket.descriptor) == TCP_CLOSE;
}

int ReadableBytes(const Socket& socket) {
    int count = 0;
    ::ioctl(socket.descriptor, FIONREAD, &count);
    return count;
}

// The number of bytes in the queue according to TCP_INQ, which counts the peer's FIN.
int QueuedBytes(const Socket& socket) {
    SetBooleanOption(socket.descriptor, IPPROTO_TCP, TCP_INQ, true);
    alignas(cmsghdr) char room[CMSG_SPACE(sizeof(int))] = {};
    msghdr message = {};
    message.msg_control = room;
    message.msg_controllen = sizeof room;
    int count = 0;
    if (::recvmsg(socket.descriptor, &message, MSG_PEEK | MSG_DONTWAIT) < 0) return count;
    const cmsghdr* const part = CMSG_FIRSTHDR(&message);
    if (part != nullptr) std::memcpy(&count, CMSG_DATA(part), sizeof count);
    return count;
}

// Whether the peer had shut down its half before the connection was torn down and its error read.
// TCP_CLOSE does not tell, and another thread may have read the error. But TCP_INQ goes on counting
// the peer's FIN as a byte of the queue, and FIONREAD never does. The loop is for bytes that
// another thread reads between the two calls, which would look the same.
bool HasPeerEnded(const Socket& socket) {
    int readable = 0;
    int queued = 0;
    do {
        readable = ReadableBytes(socket);
        queued = QueuedBytes(socket);
    } while (readable != ReadableBytes(socket));
    return queued > readable;
}

// EPIPE tells a sender only that there was an end whose error has been read, or that both halves
// were shut down in order.
WinsockError ErrorOfBrokenPipe(const Socket& socket) {
    if (const auto end = MarkedEnd(socket); IsError(end)) return end;
    if (!HasPeerEnded(socket)) return MarkEnd(socket, WinsockError::ConnectionReset);
    if (IsOwnEndAcknowledged(socket)) return WinsockError::ShutDown;
    return MarkEnd(socket, WinsockError::ConnectionAborted);
}

// If the connection is not torn down, EPIPE means that this side has shut down its half.
WinsockError ErrorOfLiving(int systemError) {
    return systemError == EPIPE ? WinsockError::ShutDown : WinsockFromErrno(systemError);
}

// After the peer's FIN, recv goes on returning 0 although a reset has left EPIPE in SO_ERROR: the
// peer refused what was sent. Without a FIN and without an error, another call has read the reset.
WinsockError EndWithoutBytes(const Socket& socket) {
    if (const auto end = MarkedEnd(socket); IsError(end)) return end;
    const int told = TakePendingError(socket.descriptor);
    if (told != 0) return MarkEnd(socket, WinsockFromErrno(told));
    return HasPeerEnded(socket) ? WinsockError::None
                                : MarkEnd(socket, WinsockError::ConnectionReset);
}

}  // namespace

WinsockError MarkedEnd(const Socket& socket) noexcept {
    if (socket.Has(Flag::Reset)) return WinsockError::ConnectionReset;
    return socket.Has(Flag::Aborted) ? WinsockError::ConnectionAborted : WinsockError::None;
}

bool HasBytes(const Socket& socket) {
    char byte = 0;
    return ::recv(socket.descriptor, &byte, sizeof byte, MSG_PEEK | MSG_DONTWAIT) > 0;
}

WinsockError StreamError(const Socket& socket) {
    const int error = errno;
    if (error == EAGAIN) {
        return socket.Has(Flag::NonBlocking) ? WinsockError::WouldBlock : WinsockError::TimedOut;
    }
    if (!MayTellEnd(error)) return WinsockFromErrno(error);
    if (!IsTornDown(socket)) return ErrorOfLiving(error);
    if (error == EPIPE) return ErrorOfBrokenPipe(socket);
    return MarkEnd(socket, WinsockFromErrno(error));
}

WinsockError ErrorOfNothing(const Socket& socket) {
    // A receive call with an empty buffer returns 0 even if there are bytes.
    return IsTornDown(socket) && !HasBytes(socket) ? EndWithoutBytes(socket) : WinsockError::None;
}

}  // namespace Posix

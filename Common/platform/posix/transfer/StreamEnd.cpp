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

int MarkEnd(const Socket& socket, int error) {
    socket.entry->Set(error == WinsockError::ConnectionReset ? Flag::Reset : Flag::Aborted);
    return error;
}

// The numbers by which the kernel tells an end. A connection that lives on may have any of them to
// tell as well: a filter refused a packet, a router sent a report, this side has ended its half.
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

// An end of one half, or of both as long as one is not acknowledged, is another state.
bool IsTornDown(const Socket& socket) {
    return TcpState(socket.descriptor) == TCP_CLOSE;
}

int ReadableBytes(const Socket& socket) {
    int count = 0;
    ::ioctl(socket.descriptor, FIONREAD, &count);
    return count;
}

// What the kernel says is in the queue, the peer's end of its half included.
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

// Whether the peer had ended its half in good order, of a connection that is torn down and has told
// why. The state does not say, and the report may have gone to another thread; but the kernel
// counts the peer's end as a byte of the queue for ever, and never as a readable one. What another
// thread reads meanwhile would look like it.
bool HasPeerEnded(const Socket& socket) {
    int readable = 0;
    int queued = 0;
    do {
        readable = ReadableBytes(socket);
        queued = QueuedBytes(socket);
    } while (readable != ReadableBytes(socket));
    return queued > readable;
}

// To a sender the kernel says of any end that was told already only that there was one, and the
// same of orderly ends of both halves.
int ErrorOfBrokenPipe(const Socket& socket) {
    if (const int end = MarkedEnd(socket)) return end;
    if (!HasPeerEnded(socket)) return MarkEnd(socket, WinsockError::ConnectionReset);
    if (IsOwnEndAcknowledged(socket)) return WinsockError::ShutDown;
    return MarkEnd(socket, WinsockError::ConnectionAborted);
}

// Only this side may have ended its half of a connection that is not torn down.
int ErrorOfLiving(int systemError) {
    return systemError == EPIPE ? WinsockError::ShutDown : WinsockFromErrno(systemError);
}

// Behind the peer's orderly end the kernel keeps a later one to itself: that it refused what was
// sent (EPIPE). Without that end, and without a report, another call has been told of a reset.
int EndWithoutBytes(const Socket& socket) {
    if (const int end = MarkedEnd(socket)) return end;
    const int told = TakePendingError(socket.descriptor);
    if (told != 0) return MarkEnd(socket, WinsockFromErrno(told));
    return HasPeerEnded(socket) ? 0 : MarkEnd(socket, WinsockError::ConnectionReset);
}

}  // namespace

int MarkedEnd(const Socket& socket) noexcept {
    if (socket.Has(Flag::Reset)) return WinsockError::ConnectionReset;
    return socket.Has(Flag::Aborted) ? WinsockError::ConnectionAborted : 0;
}

bool HasBytes(const Socket& socket) {
    char byte = 0;
    return ::recv(socket.descriptor, &byte, sizeof byte, MSG_PEEK | MSG_DONTWAIT) > 0;
}

int StreamError(const Socket& socket) {
    const int error = errno;
    if (error == EAGAIN) {
        return socket.Has(Flag::NonBlocking) ? WinsockError::WouldBlock : WinsockError::TimedOut;
    }
    if (!MayTellEnd(error)) return WinsockFromErrno(error);
    if (!IsTornDown(socket)) return ErrorOfLiving(error);
    if (error == EPIPE) return ErrorOfBrokenPipe(socket);
    return MarkEnd(socket, WinsockFromErrno(error));
}

int ErrorOfNothing(const Socket& socket) {
    // A receive call without room gets nothing though there are bytes.
    return IsTornDown(socket) && !HasBytes(socket) ? EndWithoutBytes(socket) : 0;
}

}  // namespace Posix

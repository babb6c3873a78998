// The calls that move bytes. A plain transfer on a connected stream is nearly the bare system call;
// whatever needs more thought is out of line.
#include <Platform/Winsock.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <utility>

#include "errors/Errors.h"
#include "sockets/Connection.h"
#include "sockets/SocketTable.h"
#include "sockets/TcpState.h"
#include "system/Descriptors.h"
#include "transfer/Datagrams.h"
#include "sockets/ErrorQueue.h"
#include "transfer/Transfer.h"
#include "transfer/TransferDeadline.h"

namespace {

using namespace Posix;

// The end that the connection has met, or 0.
int MarkedEnd(const Socket& socket) {
    if (socket.Has(Flag::Reset)) return WinsockError::ConnectionReset;
    return socket.Has(Flag::Aborted) ? WinsockError::ConnectionAborted : 0;
}

// What is wrong with a transfer before the kernel is asked, or 0.
int TransferError(const Socket& socket, int length, int flags) {
    const int error = Posix::TransferError(length, flags);
    return error != 0 ? error : MarkedEnd(socket);
}

// The network's reports reach a stream only when it has given up.
bool EndsConnection(int error) {
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

// The kernel forgets with its report how a connection ended.
void MarkEnd(const Socket& socket, int error) {
    socket.entry->Set(error == WinsockError::ConnectionReset ? Flag::Reset : Flag::Aborted);
}

int StreamError(const Socket& socket) {
    const int systemError = errno;
    if (systemError == EAGAIN) {
        return socket.Has(Flag::NonBlocking) ? WinsockError::WouldBlock : WinsockError::TimedOut;
    }
    // The other direction may have met the reset meanwhile.
    if (systemError == EPIPE && socket.Has(Flag::Reset)) return WinsockError::ConnectionReset;
    const int error = WinsockFromErrno(systemError);
    if (EndsConnection(systemError)) MarkEnd(socket, error);
    return error;
}

// An orderly end leaves this side's half of the connection open.
bool IsTornDown(const Socket& socket) {
    return TcpState(socket.descriptor) == TCP_CLOSE;
}

// When a receive call gets nothing, the connection may yet have ended otherwise. Behind the peer's
// orderly end the kernel keeps to itself that a later send was refused (EPIPE); and the thread that
// sends may have been told of a reset, which the kernel tells once, and not have marked it yet.
int FinishWithNothing(const Socket& socket) {
    if (MarkedEnd(socket) == 0 && IsTornDown(socket)) {
        const bool refused = TakePendingError(socket.descriptor) == EPIPE;
        MarkEnd(socket, refused ? WinsockError::ConnectionAborted : WinsockError::ConnectionReset);
    }
    const int end = MarkedEnd(socket);
    return end != 0 ? Fail(end) : Succeed();
}

// The failure of the last attempt is marked even when it is not answered yet.
int FinishSending(const Socket& socket, int sent) {
    const int error = StreamError(socket);
    if (!socket.IsOpen()) return Fail(WinsockError::Interrupted);
    return sent == 0 ? Fail(error) : Succeed(sent);
}

// A blocking send takes the whole buffer, though signals make the kernel return in the middle of
// it. Parts that were sent before a failure count; the failure shows in the next call.
int SendStream(const Socket& socket, const char* buffer, int length) {
    TransferDeadline deadline(socket, Sending);
    std::size_t sent = 0;
    do {
        const ssize_t count = RepeatInterrupted(deadline, [&](int attemptFlags) {
            return ::send(socket.descriptor, buffer + sent, Size(length) - sent,
                          MSG_NOSIGNAL | attemptFlags);
        });
        if (count < 0) return FinishSending(socket, static_cast<int>(sent));
        sent += static_cast<std::size_t>(count);
    } while (sent < Size(length) && deadline.AllowsRest());
    return Succeed(static_cast<int>(sent));
}

int ReceiveStream(const Socket& socket, char* buffer, int length) {
    TransferDeadline deadline(socket, Receiving);
    const ssize_t received = RepeatInterrupted(deadline, [&](int attemptFlags) {
        return ::recv(socket.descriptor, buffer, Size(length), attemptFlags);
    });
    if (received < 0) return Fail(StreamError(socket));
    return received == 0 ? FinishWithNothing(socket) : Succeed(static_cast<int>(received));
}

[[gnu::cold, gnu::noinline]] int SendOtherwise(Winsock::Handle handle, const char* buffer,
                                               int length, int flags) {
    const Socket socket = FindSocket(handle);
    if (!socket) return Winsock::SocketError;
    if (const int error = TransferError(socket, length, flags)) return Fail(error);
    if (!IsConnected(socket)) return Fail(WinsockError::NotConnected);
    const bool datagram = socket.Has(Flag::Datagram);
    return UnlessClosed(socket, datagram ? SendDatagram(socket, buffer, length)
                                         : SendStream(socket, buffer, length));
}

[[gnu::cold, gnu::noinline]] int ReceiveOtherwise(Winsock::Handle handle, char* buffer, int length,
                                                  int flags) {
    const Socket socket = FindSocket(handle);
    if (!socket) return Winsock::SocketError;
    if (const int error = TransferError(socket, length, flags)) return Fail(error);
    const bool datagram = socket.Has(Flag::Datagram);
    if (!datagram && !IsConnected(socket)) return Fail(WinsockError::NotConnected);
    return UnlessClosed(socket, datagram ? ReceiveDatagram(socket, buffer, length)
                                         : ReceiveStream(socket, buffer, length));
}

int SendRest(const Socket& socket, const char* buffer, int length, int sent) {
    if (sent < 0 && errno == EINTR) return SendStream(socket, buffer, length);
    if (sent < 0) return Fail(StreamError(socket));
    if (socket.Has(Flag::NonBlocking)) return Succeed(sent);
    const int rest = SendStream(socket, buffer + sent, length - sent);
    return socket.IsOpen() ? Succeed(sent + std::max(rest, 0)) : rest;
}

int ReceiveOnce(const Socket& socket, char* buffer, int length, int received) {
    if (received == 0) return FinishWithNothing(socket);
    if (errno == EINTR) return ReceiveStream(socket, buffer, length);
    return Fail(StreamError(socket));
}

// What a direct transfer was asked to do. It lies in memory, where only the ways out of line read
// it: registers that survive the system call would have to be saved and restored around each. The
// length is volatile so that the compiler leaves it there.
template <typename Buffer>
struct Request {
    Winsock::Handle handle;
    Buffer buffer;
    volatile int length;

    Socket Target() const noexcept { return Socket(static_cast<int>(handle)); }
};
using SendRequest = Request<const char*>;
using ReceiveRequest = Request<char*>;

// Goes on after a direct send that did not take the whole buffer.
[[gnu::cold, gnu::noinline]] int FinishSend(const SendRequest& request, int sent) {
    const Socket socket = request.Target();
    return UnlessClosed(socket, SendRest(socket, request.buffer, request.length, sent));
}

[[gnu::cold, gnu::noinline]] int FinishReceive(const ReceiveRequest& request, int received) {
    const Socket socket = request.Target();
    return UnlessClosed(socket, ReceiveOnce(socket, request.buffer, request.length, received));
}

// A direct transfer as one of the calls on its socket.
class DirectCall {
public:
    explicit DirectCall(Winsock::Handle handle) noexcept : entry_(&socketTable[handle]) {
        entry_->Enter();
    }
    ~DirectCall() {
        if (entry_ != nullptr) entry_->Leave();
    }
    DirectCall(const DirectCall&) = delete;
    DirectCall& operator=(const DirectCall&) = delete;

    bool Is(std::uint32_t flag) const noexcept { return entry_->IsInside(flag); }
    int Leave(int result) noexcept { return std::exchange(entry_, nullptr)->Leave(result); }

private:
    SocketEntry* entry_;
};

}  // namespace

int Winsock::send(Handle handle, const char* buffer, int length, int flags) {
    if (handle >= SocketTableSize || length < 0 || flags != 0) {
        return SendOtherwise(handle, buffer, length, flags);
    }
    DirectCall call(handle);
    if (!call.Is(Flag::DirectSend)) {
        return call.Leave(SendOtherwise(handle, buffer, length, flags));
    }
    const SendRequest request = {handle, buffer, length};
    const int sent =
        static_cast<int>(::send(static_cast<int>(handle), buffer, Size(length), MSG_NOSIGNAL));
    if (sent != request.length) return call.Leave(FinishSend(request, sent));
    return call.Leave(Succeed(sent));
}

int Winsock::recv(Handle handle, char* buffer, int length, int flags) {
    if (handle >= SocketTableSize || length < 0 || flags != 0) {
        return ReceiveOtherwise(handle, buffer, length, flags);
    }
    DirectCall call(handle);
    if (!call.Is(Flag::DirectReceive)) {
        return call.Leave(ReceiveOtherwise(handle, buffer, length, flags));
    }
    const ReceiveRequest request = {handle, buffer, length};
    const int received =
        static_cast<int>(::recv(static_cast<int>(handle), buffer, Size(length), 0));
    if (received <= 0) return call.Leave(FinishReceive(request, received));
    return call.Leave(Succeed(received));
}

// The calls that transfer bytes. A plain transfer on a connected stream is little more than the
// system call; everything else is out of line.
#include "transfer/Transfer.h"

#include "Platform/RarelyRead.h"
#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "sockets/Connection.h"
#include "sockets/SocketTable.h"
#include "transfer/Datagrams.h"
#include "transfer/StreamEnd.h"
#include "transfer/TransferDeadline.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>

namespace {

using namespace Posix;

int FinishWithNothing(const Socket& socket) {
    const WinsockError error = ErrorOfNothing(socket);
    return IsError(error) ? Fail(error) : Succeed();
}

// The last attempt's failure is remembered even if this call does not return it.
int FinishSending(const Socket& socket, int sent) {
    const WinsockError error = StreamError(socket);
    if (!socket.IsOpen()) return Fail(WinsockError::Interrupted);
    return sent == 0 ? Fail(error) : Succeed(sent);
}

// A blocking send takes the whole buffer, although signals make the kernel return early. Parts that
// were sent before a failure count; the next call returns the failure.
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
    const bool cutShort = sent < Size(length) && !socket.IsOpen();
    return cutShort ? Fail(WinsockError::Interrupted) : Succeed(static_cast<int>(sent));
}

// The kernel waits for bytes even if length is 0, and returns the same whether some came or the
// time elapsed. A poll that finds nothing fails if a signal has just come.
bool WaitedInVain(const Socket& socket, int length) {
    pollfd wait = {socket.descriptor, POLLIN, 0};
    return length == 0 && socket.Has(Flag::ReceiveTimeout) && ::poll(&wait, 1, 0) <= 0;
}

int ReceiveStream(const Socket& socket, char* buffer, int length) {
    TransferDeadline deadline(socket, Receiving);
    const ssize_t received = RepeatInterrupted(deadline, [&](int attemptFlags) {
        return ::recv(socket.descriptor, buffer, Size(length), attemptFlags);
    });
    if (received < 0) return Fail(StreamError(socket));
    if (received > 0) return Succeed(static_cast<int>(received));
    return WaitedInVain(socket, length) ? Fail(WinsockError::TimedOut) : FinishWithNothing(socket);
}

[[gnu::cold, gnu::noinline]] int SendOtherwise(Winsock::Handle handle, const char* buffer,
                                               int length, int flags) {
    const Socket socket = FindSocket(handle);
    if (!socket) return Winsock::SocketError;
    if (const auto error = TransferError(length, flags); IsError(error)) return Fail(error);
    if (!IsConnected(socket)) return Fail(WinsockError::NotConnected);
    if (const auto end = MarkedEnd(socket); IsError(end)) return Fail(end);
    const bool datagram = socket.Has(Flag::Datagram);
    return UnlessClosed(socket, datagram ? SendDatagram(socket, buffer, length)
                                         : SendStream(socket, buffer, length));
}

[[gnu::cold, gnu::noinline]] int ReceiveOtherwise(Winsock::Handle handle, char* buffer, int length,
                                                  int flags) {
    const Socket socket = FindSocket(handle);
    if (!socket) return Winsock::SocketError;
    if (const auto error = TransferError(length, flags); IsError(error)) return Fail(error);
    const bool datagram = socket.Has(Flag::Datagram);
    if (!datagram && !IsConnected(socket)) return Fail(WinsockError::NotConnected);
    if (const auto end = MarkedEnd(socket); IsError(end) && !HasBytes(socket)) return Fail(end);
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

// Counts a direct transfer as a call on its socket.
SocketEntry& EnterDirectly(Winsock::Handle handle) noexcept {
    SocketEntry* entry = &socketTable[handle];
    // Keeps the compiler from computing the entry's address again for each field.
    asm("" : "+r"(entry));
    entry->Enter();
    return *entry;
}

// Returns the result of the system call; a thread that is cancelled in it leaves by unwinding.
template <class SystemCall>
int CountedResult(SocketEntry& entry, SystemCall call) {
    try {
        return static_cast<int>(call());
    } catch (...) {
        entry.Leave();
        throw;
    }
}

// Counts the call again, for the code that takes over from a direct transfer.
Socket SocketOf(const SocketEntry& entry) noexcept {
    return Socket(static_cast<int>(&entry - socketTable));
}

// The arguments of a direct transfer.
template <class Buffer>
struct Request {
    RarelyRead<Buffer> buffer;
    RarelyRead<int> length;
};
using SendRequest = Request<const char*>;
using ReceiveRequest = Request<char*>;

// Continues a direct send that did not take the whole buffer.
[[gnu::cold, gnu::noinline]] int FinishSend(const SocketEntry& entry, const SendRequest& request,
                                            int sent) {
    const Socket socket = SocketOf(entry);
    return UnlessClosed(socket, SendRest(socket, request.buffer, request.length, sent));
}

[[gnu::cold, gnu::noinline]] int FinishReceive(const SocketEntry& entry,
                                               const ReceiveRequest& request, int received) {
    const Socket socket = SocketOf(entry);
    return UnlessClosed(socket, ReceiveOnce(socket, request.buffer, request.length, received));
}

}  // namespace

int Winsock::send(Handle handle, const char* buffer, int length, int flags) {
    if (handle >= SocketTableSize || length < 0 || flags != 0) [[unlikely]] {
        return SendOtherwise(handle, buffer, length, flags);
    }
    SocketEntry& entry = EnterDirectly(handle);
    if (!entry.IsInside(Flag::DirectSend)) [[unlikely]] {
        return entry.Leave(
            CountedResult(entry, [&] { return SendOtherwise(handle, buffer, length, flags); }));
    }
    const SendRequest request = {buffer, length};
    lastError = WinsockError::None;
    const int sent = CountedResult(entry, [&] {
        return ::send(static_cast<int>(handle), buffer, Size(length), MSG_NOSIGNAL);
    });
    if (sent != request.length) [[unlikely]] {
        return entry.Leave(FinishSend(entry, request, sent));
    }
    if (sent < 0) __builtin_unreachable();  // no length is
    return entry.Leave(sent);
}

int Winsock::recv(Handle handle, char* buffer, int length, int flags) {
    if (handle >= SocketTableSize || length < 0 || flags != 0) [[unlikely]] {
        return ReceiveOtherwise(handle, buffer, length, flags);
    }
    SocketEntry& entry = EnterDirectly(handle);
    if (!entry.IsInside(Flag::DirectReceive)) [[unlikely]] {
        return entry.Leave(
            CountedResult(entry, [&] { return ReceiveOtherwise(handle, buffer, length, flags); }));
    }
    const ReceiveRequest request = {buffer, length};
    lastError = WinsockError::None;
    const int received = CountedResult(
        entry, [&] { return ::recv(static_cast<int>(handle), buffer, Size(length), 0); });
    if (received <= 0) [[unlikely]] {
        return entry.Leave(FinishReceive(entry, request, received));
    }
    return entry.Leave(received);
}

// Listening sockets, and the connections that they accept.
#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "sockets/Connection.h"
#include "sockets/KernelAddress.h"
#include "sockets/PortReuse.h"
#include "sockets/SocketTable.h"
#include "system/Descriptors.h"
#include "system/Waiting.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <cerrno>

namespace {

using namespace Posix;

WinsockError ListenError(const Socket& socket) {
    if (socket.Has(Flag::Datagram)) return WinsockError::OperationNotSupported;
    if (IsConnected(socket)) return WinsockError::IsConnected;
    return socket.Has(Flag::Bound) ? WinsockError::None : WinsockError::Invalid;
}

// The kernel's errors for a connection that died before it was accepted, which are not failures of
// the listener.
bool IsOfDeadConnection(int error) {
    switch (error) {
        case ECONNABORTED:
        case EHOSTDOWN:
        case EHOSTUNREACH:
        case ENETDOWN:
        case ENETUNREACH:
        case ENONET:
        case ENOPROTOOPT:
        case EOPNOTSUPP:
        case EPROTO:
            return true;
        default:
            return false;
    }
}

// A queue holds at most net.core.somaxconn dead connections, 4096 by default. More of them in a row
// mean something else.
bool IsWorthAnotherAccept(const Socket& listener, int& deadConnections) {
    constexpr int Most = 4096;
    if (errno == EINTR) return true;
    if (IsOfDeadConnection(errno)) return ++deadConnections <= Most;
    if (errno != EAGAIN || listener.Has(Flag::NonBlocking)) return false;
    // The receive timeout limits accept in the kernel, but not on Winsock.
    return WaitUntilReady(listener.descriptor, POLLIN, WithoutLimit);
}

int AcceptDescriptor(const Socket& listener, bool nonBlocking, KernelAddress& peer) {
    const int flags = SOCK_CLOEXEC | (nonBlocking ? SOCK_NONBLOCK : 0);
    int deadConnections = 0;
    int descriptor = -1;
    do {
        socklen_t length = sizeof peer;
        descriptor = ::accept4(listener.descriptor, &peer.any, &length, flags);
    } while (descriptor < 0 && IsWorthAnotherAccept(listener, deadConnections));
    return descriptor;
}

bool TakeOverTimeout(const Socket& listener, const Descriptor& connection, int option) {
    timeval time = {};
    socklen_t length = sizeof time;
    return ::getsockopt(listener.descriptor, SOL_SOCKET, option, &time, &length) == 0 &&
           ::setsockopt(connection.Number(), SOL_SOCKET, option, &time, sizeof time) == 0;
}

// The kernel copies the listener's timeouts when the connection is established, Winsock when it is
// accepted. Returns false with errno if the kernel refuses.
bool TakeOverTimeouts(const Socket& listener, const Descriptor& connection) {
    return TakeOverTimeout(listener, connection, SO_RCVTIMEO) &&
           TakeOverTimeout(listener, connection, SO_SNDTIMEO);
}

Winsock::Handle AcceptConnection(const Socket& listener, KernelAddress& peer) {
    const std::uint32_t mode = listener.entry->Flags() & Flag::NonBlocking;
    Descriptor connection(AcceptDescriptor(listener, mode != 0, peer));
    const std::uint32_t flags = listener.entry->Flags();
    const bool changed = connection && (flags & Flag::NewTimeouts) != 0;
    if (changed && !TakeOverTimeouts(listener, connection)) {
        FailFromErrno();
        return Winsock::InvalidSocket;
    }
    const std::uint32_t inherited = mode | (flags & Flag::Inherited);
    return AdoptDescriptor(connection.Take(), inherited | Flag::Connected | Flag::Accepted);
}

WinsockError AcceptError(const Socket& listener, const void* address, const int* length) {
    if (listener.Has(Flag::Datagram)) return WinsockError::OperationNotSupported;
    if (!listener.Has(Flag::Listening)) return WinsockError::Invalid;
    if (address != nullptr && !HasRoomForAddress(listener, address, length)) {
        return WinsockError::Fault;
    }
    return WinsockError::None;
}

}  // namespace

int Winsock::listen(Handle handle, int backlog) {
    const Socket socket = FindSocket(handle);
    if (!socket) return SocketError;
    if (const auto error = ListenError(socket); IsError(error)) return Fail(error);
    if (!ListenOverEndedConnections(socket, backlog)) return FailFromErrno();
    socket.entry->Set(Flag::Listening);
    return Succeed();
}

Winsock::Handle Winsock::accept(Handle handle, void* address, int* length) {
    const Socket listener = FindSocket(handle);
    if (!listener) return InvalidSocket;
    if (const auto error = AcceptError(listener, address, length); IsError(error)) {
        Fail(error);
        return InvalidSocket;
    }
    KernelAddress peer = {};
    const Handle accepted = AcceptConnection(listener, peer);
    if (accepted == InvalidSocket) {
        UnlessClosed(listener, SocketError);
    } else if (address != nullptr) {
        WinsockFromKernel(listener, peer, address, length);
    }
    return accepted;
}

// Sockets that wait for connections, and the connections that they accept.
#include <Platform/Winsock.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

#include "errors/Errors.h"
#include "sockets/Connection.h"
#include "sockets/KernelAddress.h"
#include "sockets/PortReuse.h"
#include "sockets/SocketTable.h"
#include "system/Waiting.h"

namespace {

using namespace Posix;

int ListenError(const Socket& socket) {
    if (socket.Has(Flag::Datagram)) return WinsockError::OperationNotSupported;
    if (IsConnected(socket)) return WinsockError::IsConnected;
    return socket.Has(Flag::Bound) ? 0 : WinsockError::Invalid;
}

// A connection that died before it was accepted is not the listener's failure.
bool IsWorthAnotherAccept(const Socket& listener) {
    if (errno == EINTR || errno == ECONNABORTED || errno == EPROTO) return true;
    if (errno != EAGAIN || listener.Has(Flag::NonBlocking)) return false;
    // The kernel bounds accept by the receive time-out; Winsock does not.
    return WaitUntilReady(listener.descriptor, POLLIN, WithoutLimit);
}

int AcceptDescriptor(const Socket& listener, KernelAddress& peer) {
    const int mode = listener.Has(Flag::NonBlocking) ? SOCK_NONBLOCK : 0;
    int descriptor = -1;
    do {
        socklen_t length = sizeof peer;
        descriptor = ::accept4(listener.descriptor, &peer.any, &length, SOCK_CLOEXEC | mode);
    } while (descriptor < 0 && IsWorthAnotherAccept(listener));
    return descriptor;
}

int AcceptError(const Socket& listener, const void* address, const int* length) {
    if (listener.Has(Flag::Datagram)) return WinsockError::OperationNotSupported;
    if (!listener.Has(Flag::Listening)) return WinsockError::Invalid;
    if (address != nullptr && !HasRoomForAddress(listener, address, length)) {
        return WinsockError::Fault;
    }
    return 0;
}

}  // namespace

int Winsock::listen(Handle handle, int backlog) {
    const Socket socket = FindSocket(handle);
    if (!socket) return SocketError;
    if (const int error = ListenError(socket)) return Fail(error);
    if (!ListenOverEndedConnections(socket, backlog)) return FailFromErrno();
    socket.entry->Set(Flag::Listening);
    return Succeed();
}

Winsock::Handle Winsock::accept(Handle handle, void* address, int* length) {
    const Socket listener = FindSocket(handle);
    if (!listener) return InvalidSocket;
    if (const int error = AcceptError(listener, address, length)) {
        Fail(error);
        return InvalidSocket;
    }
    KernelAddress peer = {};
    const std::uint32_t inherited = listener.entry->Flags() & Flag::Inherited;
    const Handle accepted = AdoptDescriptor(AcceptDescriptor(listener, peer),
                                            inherited | Flag::Connected | Flag::Accepted);
    if (accepted == InvalidSocket) {
        UnlessClosed(listener, SocketError);
    } else if (address != nullptr) {
        WinsockFromKernel(listener, peer, address, length);
    }
    return accepted;
}

#include <Platform/Winsock.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

#include "errors/Errors.h"
#include "sockets/Connection.h"
#include "sockets/DatagramPeer.h"
#include "sockets/KernelAddress.h"
#include "sockets/SocketTable.h"
#include "system/Descriptors.h"
#include "system/Waiting.h"

namespace {

using namespace Posix;

void MarkConnected(const Socket& socket) {
    // Set before cleared, so that no other thread finds the socket with neither.
    socket.entry->Set(Flag::Connected | Flag::Bound);
    socket.entry->Clear(Flag::Connecting);
}

void MarkConnecting(const Socket& socket) {
    socket.entry->Set(Flag::Connecting | Flag::Bound);
}

bool HasPeer(const Socket& socket) {
    KernelAddress peer = {};
    socklen_t length = sizeof peer;
    return ::getpeername(socket.descriptor, &peer.any, &length) == 0;
}

// The outcome of a connect call that ended without a peer. What ends connections only tells that
// there was one meanwhile; a connect call that failed is over.
void MarkOutcome(const Socket& socket, int error) {
    if (error == ECONNRESET || error == EPIPE) {
        socket.entry->Set(error == ECONNRESET ? Flag::Reset : Flag::Aborted);
        MarkConnected(socket);
    } else if (error != 0) {
        socket.entry->Set(Flag::ConnectFailed);
        socket.entry->Clear(Flag::Connecting);
    }
}

// The error number of the system, 0 or EINPROGRESS included.
int ConnectOnce(const Socket& socket, const KernelAddress& peer) {
    return ConnectTo(socket, peer) ? 0 : errno;
}

// A connect call after a failed one whose outcome was taken otherwise only reports that; the next
// one acts.
int ConnectAnew(const Socket& socket, const KernelAddress& peer) {
    const int error = ConnectOnce(socket, peer);
    return error == ECONNABORTED ? ConnectOnce(socket, peer) : error;
}

// An interrupted connect goes on in the kernel, and so does one that the send time-out, which
// Winsock does not apply here, has cut short. Calling connect again would not be a continuation.
int WaitForOutcome(const Socket& socket) {
    if (WaitUntilReady(socket.descriptor, POLLOUT, WithoutLimit))
        return TakePendingError(socket.descriptor);
    MarkConnecting(socket);
    return errno;
}

bool IsUnfinished(int error) {
    return error == EINPROGRESS || error == EINTR;
}

int StartConnect(const Socket& socket, const KernelAddress& peer) {
    socket.entry->Clear(Flag::Connecting | Flag::ConnectFailed);
    int error = ConnectAnew(socket, peer);
    if (IsUnfinished(error) && socket.Has(Flag::NonBlocking)) {
        MarkConnecting(socket);
        return Fail(WinsockError::WouldBlock);
    }
    if (IsUnfinished(error)) error = WaitForOutcome(socket);
    if (error != 0) return Fail(WinsockFromErrno(error));
    MarkConnected(socket);
    return Succeed();
}

int ConnectAgain(const Socket& socket, const KernelAddress& peer) {
    if (IsConnected(socket)) return Fail(WinsockError::IsConnected);
    if (socket.Has(Flag::Connecting)) return Fail(WinsockError::Already);
    return StartConnect(socket, peer);
}

int ConnectStream(const Socket& socket, const KernelAddress& peer) {
    if (socket.Has(Flag::Listening)) return Fail(WinsockError::Invalid);
    if (socket.Has(Flag::Connected)) return Fail(WinsockError::IsConnected);
    // The kernel would take the wildcard for this machine.
    if (IsWildcard(peer) || PortOf(peer) == 0) return Fail(WinsockError::AddressNotAvailable);
    if (socket.Has(Flag::Connecting)) return ConnectAgain(socket, peer);
    return StartConnect(socket, peer);
}

}  // namespace

bool Posix::IsConnected(const Socket& socket) noexcept {
    if (!socket.Has(Flag::Connecting)) return socket.Has(Flag::Connected);
    if (HasPeer(socket)) {
        MarkConnected(socket);
    } else {
        MarkOutcome(socket, TakePendingError(socket.descriptor));
    }
    return socket.Has(Flag::Connected);
}

int Winsock::connect(Handle handle, const void* address, int length) {
    const Socket socket = FindSocket(handle);
    if (!socket) return SocketError;
    KernelAddress peer = {};
    if (const int error = KernelFromWinsock(socket, address, length, peer)) return Fail(error);
    return UnlessClosed(socket, socket.Has(Flag::Datagram) ? ConnectDatagram(socket, peer)
                                                           : ConnectStream(socket, peer));
}

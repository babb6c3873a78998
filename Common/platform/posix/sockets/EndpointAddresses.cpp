// The addresses of a socket's two endpoints.
#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "sockets/Connection.h"
#include "sockets/KernelAddress.h"
#include "sockets/SocketTable.h"

namespace {

using namespace Posix;

// The address that the socket is connected to, or is connecting to.
bool FindPeer(const Socket& socket, KernelAddress& peer) {
    return IsConnected(socket) ? PeerAddress(socket, peer) : IntendedPeer(socket, peer);
}

}  // namespace

int Winsock::getsockname(Handle handle, void* address, int* length) {
    const Socket socket = FindSocket(handle);
    if (!socket) return SocketError;
    if (!socket.Has(Flag::Bound)) return Fail(WinsockError::Invalid);
    if (!HasRoomForAddress(socket, address, length)) return Fail(WinsockError::Fault);
    KernelAddress local = {};
    if (!LocalAddress(socket, local)) return FailFromErrno();
    WinsockFromKernel(socket, local, address, length);
    return Succeed();
}

int Winsock::getpeername(Handle handle, void* address, int* length) {
    const Socket socket = FindSocket(handle);
    if (!socket) return SocketError;
    if (!IsConnected(socket) && !socket.Has(Flag::Connecting)) {
        return Fail(WinsockError::NotConnected);
    }
    if (!HasRoomForAddress(socket, address, length)) return Fail(WinsockError::Fault);
    KernelAddress peer = {};
    if (!FindPeer(socket, peer)) return FailFromErrno();
    WinsockFromKernel(socket, peer, address, length);
    return Succeed();
}

// The addresses of a socket's two ends.
#include <Platform/Winsock.h>

#include "errors/Errors.h"
#include "sockets/Connection.h"
#include "sockets/KernelAddress.h"
#include "sockets/SocketTable.h"

using namespace Posix;

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
    if (!IsConnected(socket)) return Fail(WinsockError::NotConnected);
    if (!HasRoomForAddress(socket, address, length)) return Fail(WinsockError::Fault);
    KernelAddress peer = {};
    if (!PeerAddress(socket, peer)) return FailFromErrno();
    WinsockFromKernel(socket, peer, address, length);
    return Succeed();
}

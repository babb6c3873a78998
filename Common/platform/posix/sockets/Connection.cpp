#include "sockets/Connection.h"

#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "sockets/DatagramPeer.h"
#include "sockets/KernelAddress.h"
#include "sockets/SocketTable.h"
#include "sockets/StreamConnect.h"

void Posix::MarkConnected(const Socket& socket) noexcept {
    // Set before Connecting is cleared, so that no other thread sees the socket with neither flag.
    socket.entry->Set(Flag::Connected | Flag::Bound);
    socket.entry->Clear(Flag::Connecting);
}

using namespace Posix;

int Winsock::connect(Handle handle, const void* address, int length) {
    const Socket socket = FindSocket(handle);
    if (!socket) return SocketError;
    KernelAddress peer = {};
    if (const auto error = KernelFromWinsock(socket, address, length, peer); IsError(error))
        return Fail(error);
    return UnlessClosed(socket, socket.Has(Flag::Datagram) ? ConnectDatagram(socket, peer)
                                                           : ConnectStream(socket, peer));
}

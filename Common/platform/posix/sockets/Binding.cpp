#include <Platform/Winsock.h>
#include <sys/socket.h>

#include <cerrno>

#include "errors/Errors.h"
#include "sockets/KernelAddress.h"
#include "sockets/PortReuse.h"
#include "sockets/SocketTable.h"

namespace {

using namespace Posix;

// The kernel reports every refusal alike. Where it was to choose the port, all are in use.
int BindError(const Socket& socket, const KernelAddress& address) {
    const bool askedForReuse = socket.Has(Flag::Reuse) && PortOf(address) != 0;
    return errno == EADDRINUSE && askedForReuse ? WinsockError::Access : WinsockFromErrno(errno);
}

}  // namespace

int Winsock::bind(Handle handle, const void* address, int length) {
    const Socket socket = FindSocket(handle);
    if (!socket) return SocketError;
    KernelAddress local = {};
    if (const int error = KernelFromWinsock(socket, address, length, local)) return Fail(error);
    if (socket.Has(Flag::Bound)) return Fail(WinsockError::Invalid);
    if (!BindOverEndedConnections(socket, local)) return Fail(BindError(socket, local));
    socket.entry->Set(Flag::Bound);
    return Succeed();
}

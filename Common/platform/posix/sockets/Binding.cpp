#include <Platform/Winsock.h>
#include <sys/socket.h>

#include <cerrno>

#include "errors/Errors.h"
#include "sockets/KernelAddress.h"
#include "sockets/PortReuse.h"
#include "sockets/SocketTable.h"

namespace {

using namespace Posix;

bool Overlap(const KernelAddress& left, const KernelAddress& right) {
    if (left.any.sa_family != right.any.sa_family) return false;
    return IsWildcard(left) || IsWildcard(right) || SameHost(left, right);
}

bool StandsAt(const Socket& socket, const KernelAddress& address) {
    KernelAddress local = {};
    return LocalAddress(socket, local) && Overlap(local, address);
}

// An open stream socket of this process that stands where the address is.
Socket FindOccupant(const KernelAddress& address) {
    const std::uint16_t port = PortOf(address);
    if (port == 0) return {};
    Socket other = NextStreamOnPort(-1, port);
    while (other && !StandsAt(other, address)) {
        other = NextStreamOnPort(other.descriptor, port);
    }
    return other;
}

// The kernel alone would let a stream with the reuse option take the place of a connected one that
// has not asked for it, see PortReuse.h, and reports every refusal alike.
int OccupancyError(const Socket& socket, const KernelAddress& address) {
    if (socket.Has(Flag::Datagram)) return 0;
    const Socket occupant = FindOccupant(address);
    if (!occupant) return 0;
    if (!socket.Has(Flag::Reuse)) return WinsockError::AddressInUse;
    return occupant.Has(Flag::Reuse) ? 0 : WinsockError::Access;
}

bool BindOverEndedConnections(const Socket& socket, const KernelAddress& address) {
    SetKernelReuse(socket, true);
    const bool bound = BindTo(socket, address);
    const int error = errno;
    SetKernelReuse(socket, false);
    errno = error;
    return bound;
}

bool BindAsWinsock(const Socket& socket, const KernelAddress& address) {
    if (BindTo(socket, address)) return true;
    const bool plainStream = !socket.Has(Flag::Datagram | Flag::Reuse);
    return errno == EADDRINUSE && plainStream && BindOverEndedConnections(socket, address);
}

int BindError(const Socket& socket) {
    const bool reuseRefused = errno == EADDRINUSE && socket.Has(Flag::Reuse);
    return reuseRefused ? WinsockError::Access : WinsockFromErrno(errno);
}

// False with errno when the kernel does not tell where the socket is bound to.
bool MarkBound(const Socket& socket) {
    KernelAddress local = {};
    const bool stream = !socket.Has(Flag::Datagram);
    if (stream && !LocalAddress(socket, local)) return false;
    if (stream) socket.entry->SetPort(PortOf(local));
    socket.entry->Set(Flag::Bound);
    return true;
}

}  // namespace

int Winsock::bind(Handle handle, const void* address, int length) {
    const Socket socket = FindSocket(handle);
    if (!socket) return SocketError;
    KernelAddress local = {};
    if (const int error = KernelFromWinsock(socket, address, length, local)) return Fail(error);
    if (socket.Has(Flag::Bound)) return Fail(WinsockError::Invalid);
    if (const int error = OccupancyError(socket, local)) return Fail(error);
    if (!BindAsWinsock(socket, local)) return Fail(BindError(socket));
    return MarkBound(socket) ? Succeed() : FailFromErrno();
}

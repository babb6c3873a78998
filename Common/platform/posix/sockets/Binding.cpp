#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "sockets/AuxiliarySockets.h"
#include "sockets/DatagramPorts.h"
#include "sockets/KernelAddress.h"
#include "sockets/PortReuse.h"
#include "sockets/SocketTable.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>

namespace {

using namespace Posix;

// If the socket asked for reuse and the port's owner does not share it, Winsock has an error of its
// own (10013) for what the kernel calls EADDRINUSE. With port 0, EADDRINUSE means that no port is
// left.
WinsockError BindError(const Socket& socket, const KernelAddress& address) {
    const bool askedForReuse = socket.Has(Flag::Reuse) && PortOf(address) != 0;
    return errno == EADDRINUSE && askedForReuse ? WinsockError::Access : WinsockFromErrno(errno);
}

// The kernel would bind to a group or broadcast address as if it were local.
bool IsUnbindable(const KernelAddress& address) {
    if (address.any.sa_family == AF_INET6) return IN6_IS_ADDR_MULTICAST(&address.ipv6.sin6_addr);
    const in_addr_t ipv4 = ntohl(address.ipv4.sin_addr.s_addr);
    return IN_MULTICAST(ipv4) || ipv4 == INADDR_BROADCAST;
}

WinsockError BindStream(const Socket& socket, const KernelAddress& address) {
    return BindOverEndedConnections(socket, address) ? WinsockError::None
                                                     : BindError(socket, address);
}

WinsockError BindWithAuxiliaries(const Socket& socket, const KernelAddress& address) {
    AuxiliarySockets auxiliaries;
    if (const auto error = OpenAuxiliaries(socket, address, auxiliaries); IsError(error))
        return error;
    if (!BindDatagram(socket, address)) return BindError(socket, address);
    return BindAuxiliaries(socket, address, auxiliaries);
}

WinsockError BindAsWinsock(const Socket& socket, const KernelAddress& address) {
    return socket.Has(Flag::Datagram) ? BindWithAuxiliaries(socket, address)
                                      : BindStream(socket, address);
}

}  // namespace

int Winsock::bind(Handle handle, const void* address, int length) {
    const Socket socket = FindSocket(handle);
    if (!socket) return SocketError;
    KernelAddress local = {};
    if (const auto error = KernelFromWinsock(socket, address, length, local); IsError(error))
        return Fail(error);
    if (socket.Has(Flag::Bound)) return Fail(WinsockError::Invalid);
    if (IsUnbindable(local)) return Fail(WinsockError::AddressNotAvailable);
    if (const auto error = BindAsWinsock(socket, local); IsError(error)) return Fail(error);
    socket.entry->Set(Flag::Bound);
    return Succeed();
}

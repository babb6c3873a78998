#include "sockets/PortReuse.h"

#include "sockets/BooleanOption.h"

#include <cerrno>

namespace Posix {

namespace {

bool SetKernelReuse(const Socket& socket, bool on) noexcept {
    return SetBooleanOption(socket.descriptor, SOL_SOCKET, SO_REUSEADDR, on);
}

void ResetKernelReuse(const Socket& socket) noexcept {
    const int error = errno;
    SetKernelReuse(socket, false);
    errno = error;
}

}  // namespace

bool SetPortSharing(const Socket& socket, bool on) noexcept {
    const int option = socket.Has(Flag::Datagram) ? SO_REUSEADDR : SO_REUSEPORT;
    return SetBooleanOption(socket.descriptor, SOL_SOCKET, option, on);
}

bool BindOverEndedConnections(const Socket& socket, const KernelAddress& address) noexcept {
    if (BindTo(socket, address)) return true;
    if (errno != EADDRINUSE) return false;
    SetKernelReuse(socket, true);
    const bool bound = BindTo(socket, address);
    ResetKernelReuse(socket);
    return bound;
}

// The kernel checks the port again when its stream begins to listen. Connections inherit the option
// as it is left here.
bool ListenOverEndedConnections(const Socket& socket, int backlog) noexcept {
    SetKernelReuse(socket, true);
    if (::listen(socket.descriptor, backlog) == 0) return true;
    if (!socket.Has(Flag::Listening)) ResetKernelReuse(socket);
    return false;
}

void LetPortBeBoundAgain(const Socket& socket) noexcept {
    const bool over = socket.Has(Flag::Datagram | Flag::Accepted | Flag::Reset | Flag::Aborted);
    if (!over && socket.Has(Flag::Connected | Flag::Connecting)) SetKernelReuse(socket, true);
}

}  // namespace Posix

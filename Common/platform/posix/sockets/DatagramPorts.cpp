#include "sockets/DatagramPorts.h"

#include "sockets/PortReuse.h"

#include <cerrno>

namespace Posix {

namespace {

bool BindSharing(const Socket& socket, const KernelAddress& address, bool share) noexcept {
    if (!SetPortSharing(socket, share)) return false;
    const bool bound = BindTo(socket, address);
    const int error = errno;
    SetPortSharing(socket, socket.Has(Flag::Reuse));
    errno = error;
    return bound;
}

}  // namespace

// With SO_REUSEADDR on, the kernel might choose a port that others share.
bool BindDatagram(const Socket& socket, const KernelAddress& address) noexcept {
    const bool mayShare = socket.Has(Flag::Reuse) && PortOf(address) == 0;
    return mayShare ? BindSharing(socket, address, false) : BindTo(socket, address);
}

bool BindDatagramAgain(const Socket& socket, const KernelAddress& address) noexcept {
    return socket.Has(Flag::Reception) ? BindSharing(socket, address, true)
                                       : BindTo(socket, address);
}

// Another thread may have bound it meanwhile (EINVAL).
bool TakePort(const Socket& socket) noexcept {
    KernelAddress any = {};
    any.any.sa_family = FamilyOf(socket).kernel;
    if (!BindDatagram(socket, any) && errno != EINVAL) return false;
    socket.entry->Set(Flag::Bound);
    return true;
}

}  // namespace Posix

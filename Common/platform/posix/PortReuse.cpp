#include "PortReuse.h"

#include <sys/socket.h>

namespace Posix {

void SetKernelReuse(const Socket& socket, bool on) noexcept {
    const int value = on ? 1 : 0;
    ::setsockopt(socket.descriptor, SOL_SOCKET, SO_REUSEADDR, &value, sizeof value);
}

bool CarriesKernelReuse(const Socket& socket) noexcept {
    return socket.record->Port() != 0 && socket.Has(Flag::Listening | Flag::Connected);
}

void LetPortBeBoundAgain(const Socket& socket) noexcept {
    if (socket.record->Port() != 0) SetKernelReuse(socket, true);
}

}  // namespace Posix

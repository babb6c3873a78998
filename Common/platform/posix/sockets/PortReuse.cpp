#include "sockets/PortReuse.h"

#include "sockets/BooleanOption.h"

namespace Posix {

bool SetKernelReuse(const Socket& socket, bool on) noexcept {
    return SetBooleanOption(socket.descriptor, SOL_SOCKET, SO_REUSEADDR, on);
}

bool CarriesKernelReuse(const Socket& socket) noexcept {
    return socket.entry->Port() != 0 && socket.Has(Flag::Listening | Flag::Connected);
}

void LetPortBeBoundAgain(const Socket& socket) noexcept {
    if (socket.entry->Port() != 0) SetKernelReuse(socket, true);
}

}  // namespace Posix

// Connects streams.
#pragma once

#include "sockets/KernelAddress.h"
#include "sockets/SocketTable.h"

namespace Posix {

int ConnectStream(const Socket& socket, const KernelAddress& peer);

// Records the outcome of a connect call that was left unfinished, if the kernel has it by now.
void NoticeOutcome(const Socket& socket) noexcept;

}  // namespace Posix

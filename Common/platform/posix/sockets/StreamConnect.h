// Streams that connect.
#pragma once

#include "sockets/KernelAddress.h"
#include "sockets/SocketTable.h"

namespace Posix {

int ConnectStream(const Socket& socket, const KernelAddress& peer);

// Notices what has become of a connect call that had to be left unfinished.
void NoticeOutcome(const Socket& socket) noexcept;

}  // namespace Posix

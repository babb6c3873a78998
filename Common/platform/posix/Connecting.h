// Whether a socket has a peer.
#pragma once

#include "SocketRecords.h"

namespace Posix {

// Also notices a connect call that had to be left unfinished and has succeeded meanwhile.
bool IsConnected(const Socket& socket) noexcept;

}  // namespace Posix

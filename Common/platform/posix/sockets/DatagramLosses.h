// How many datagrams of each socket ICMP errors have reported lost, each to be answered by one
// receive call.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// Which ICMP error reported the datagram: TooManyHops for "time exceeded in transit", Unreachable
// for all others.
enum class Loss { Unreachable, TooManyHops };

void AddLoss(const Socket& socket, Loss loss) noexcept;

// The error that reports one of them, or None.
WinsockError TakeLoss(const Socket& socket) noexcept;

bool HasLoss(const Socket& socket) noexcept;

// Called when the descriptor's number is used for a new socket.
void ForgetLosses(int descriptor) noexcept;

}  // namespace Posix

// How many datagrams of each socket the network has reported lost, each to be answered by one
// receive call.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// How the network reports that a datagram did not reach its peer.
enum class Loss { Unreachable, TooManyHops };

void AddLoss(const Socket& socket, Loss loss) noexcept;

// The error that reports one of them, or None.
WinsockError TakeLoss(const Socket& socket) noexcept;

bool HasLoss(const Socket& socket) noexcept;

// For the number's next socket.
void ForgetLosses(int descriptor) noexcept;

}  // namespace Posix

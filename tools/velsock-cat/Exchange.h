// Transfers bytes between the standard streams and the peer.
#pragma once

#include <VelNet/Socket.h>

#include "Arguments.h"

namespace VelSockCat {

// Returns when the exchange has ended in order: the peer has closed the connection or, with
// SendOnly, standard input has ended. Throws Failure with ConnectionLost, TimedOut or LocalFailure.
//
// With both directions the process may exit in here, with the exit code for the outcome; see the
// source.
void Exchange(VelNet::Socket& socket, Direction direction);

}  // namespace VelSockCat

// The transfer between the standard streams and the peer.
#pragma once

#include <VelNet/Socket.h>

#include "Arguments.h"

namespace VelSockCat {

// Returns when the exchange has ended in order: the peer has closed the connection or, with
// SendOnly, standard input has ended. Throws Failure with ConnectionLost, TimedOut or LocalFailure.
//
// With both directions the process may end inside, with the exit code that the outcome asks for;
// see the source.
void Exchange(VelNet::Socket& socket, Direction direction);

}  // namespace VelSockCat

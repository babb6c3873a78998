// Transfers bytes between the standard streams and the peer.
#pragma once

#include <VelNet/Socket.h>

#include "Arguments.h"
#include "Traffic.h"

namespace VelSockCat {

// Returns when the exchange has ended in order: see AwaitEnding. Throws Failure with
// ConnectionLost, TimedOut or LocalFailure.
//
// Unless it receives only, the process may exit in here, with the exit code for the outcome; see
// the source.
void Exchange(VelNet::Socket& socket, const Arguments& arguments, Traffic& traffic);

}  // namespace VelSockCat

// How an exchange ends after standard input has ended.
#pragma once

#include <VelNet/Socket.h>

#include <optional>

#include "Arguments.h"
#include "Progress.h"

namespace VelSockCat {

// Waits for the end of the exchange, and brings it about if the command line says so or the peer
// does not:
// - It waits for the peer, at most for a few seconds without bytes from it. -N and --send-only skip
//   that.
// - Then the sending direction is ended, which makes the peer end too, and it waits again, at most
//   for a minute without bytes. A classic socket cannot end one direction: it is closed instead.
// - -q limits all of that, and what it cuts off has ended in order.
//
// Returns a state that has not ended if the peer was not waited for any longer and that is in
// order. Otherwise its failure, if there is one, is the exchange's.
Progress::State AwaitEnding(Progress& progress, const VelNet::Socket& socket,
                            const Arguments& arguments);

}  // namespace VelSockCat

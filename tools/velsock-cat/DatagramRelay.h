// Passes datagrams on to another host, and its answers back.
#pragma once

#include "Arguments.h"
#include "Failure.h"

namespace VelSockCat {

// Each sender of datagrams gets a socket of its own towards the target, so that an answer finds its
// way back. Ends by a failure alone. Throws Failure, and what the library throws.
VelSockTools::ExitCode RelayDatagrams(const Arguments& arguments);

}  // namespace VelSockCat

// Opens the program's connection.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelNet/Socket.h>

#include "Arguments.h"

namespace VelSockCat {

// Listens or connects as the command line requests, and returns the connected socket with its
// timeouts set. Throws Failure with NameNotResolvable, NotConnected or TimedOut, and what the
// library throws.
VelBase::ReturnPtrI<VelNet::Socket> OpenConnection(const Arguments& arguments);

}  // namespace VelSockCat

// How the program comes by a classic socket, which speaks IPv4 by address.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelNet/Socket.h>

#include "Arguments.h"

namespace VelSockCat {

enum class Kind { Stream, Datagram };

// Connected to the first address of the host that answers; when none does, the failure of the last
// is thrown. Both functions throw Failure with NameNotResolvable, and VelNet::Exception.
VelBase::ReturnPtrI<VelNet::Socket> ConnectClassic(Kind kind, const Arguments& arguments);

// Bound to the host's first address.
VelBase::ReturnPtrI<VelNet::Socket> BindClassic(Kind kind, const Arguments& arguments);

}  // namespace VelSockCat

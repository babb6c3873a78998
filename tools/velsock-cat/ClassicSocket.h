// Opens classic sockets, which speak IPv4 by address.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelNet/Socket.h>

#include "Arguments.h"
#include "Traffic.h"

namespace VelSockCat {

enum class Kind { Stream, Datagram };

// Connects to the first address of the host that accepts; there its traffic begins.
//
// Both functions throw Failure with NameNotResolvable, NotConnected or TimedOut.
VelBase::ReturnPtrI<VelNet::Socket> ConnectClassic(Kind kind, const Arguments& arguments,
                                                   Traffic* traffic = nullptr);

// Binds to the host's first address; a stream socket listens then.
VelBase::ReturnPtrI<VelNet::Socket> BindClassic(Kind kind, const Arguments& arguments);

}  // namespace VelSockCat

// Opens extended sockets, which speak IPv4 or IPv6 by host and port strings.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelNet/Exception.h>
#include <VelNet/SocketXt.h>

#include <string>

#include "Addresses.h"
#include "Arguments.h"
#include "ClassicSocket.h"
#include "Failure.h"
#include "Traffic.h"

namespace VelSockCat {

// Creates one of the IP version that the command line requests. Throws Failure with NotConnected.
VelBase::ReturnPtrI<VelNet::SocketXt> CreateExtended(Kind kind, const Arguments& arguments);

// Connects to the first address of the host that accepts, where the traffic begins. Throws Failure
// with NameNotResolvable, NotConnected or TimedOut.
void ConnectExtended(VelNet::SocketXt& socket, const Arguments& arguments, Traffic& traffic);

// Binds to the host on the command line, or to the loopback address, and returns that host; a
// stream socket listens then. Throws Failure with NameNotResolvable or NotConnected.
std::string BindExtended(VelNet::SocketXt& socket, Kind kind, const Arguments& arguments);

// Why an operation by host failed. If the socket's IP version was the cause, it says so: unless the
// command line chooses it, it depends on the local host's name.
std::string ReasonFor(const VelNet::SocketXt& socket, const VelNet::Exception& exception,
                      const Arguments& arguments);

// A failure before any transfer: what could not be done, and why.
VelSockTools::Failure OpeningFailure(const std::string& what, const VelNet::SocketXt& socket,
                                     const Refusal& refusal, const Arguments& arguments);

}  // namespace VelSockCat

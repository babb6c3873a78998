// Opens extended sockets, which speak IPv4 or IPv6 by host and port strings.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelNet/Exception.h>
#include <VelNet/SocketXt.h>

#include <string>

#include "Arguments.h"
#include "ClassicSocket.h"
#include "Failure.h"

namespace VelSockCat {

// Creates one of the IP version that the command line requests.
VelBase::ReturnPtrI<VelNet::SocketXt> CreateExtended(Kind kind, const Arguments& arguments);

// Throws Failure with NameNotResolvable or NotConnected.
void ConnectExtended(VelNet::SocketXt& socket, const Arguments& arguments);
void BindExtended(VelNet::SocketXt& socket, const Arguments& arguments);

// Returns the string of one of the socket's own special addresses.
std::string SpecialAddressOf(const VelNet::SocketXt& socket, VelNet::SpecialAddressKind kind);

// Explains the failure if the socket's IP version was the cause: unless the command line chooses
// it, it depends on the local host's name. Empty otherwise.
std::string RemarkOnVersion(const VelNet::SocketXt& socket, const VelNet::Exception& exception,
                            const Arguments& arguments);

// A failure before any transfer.
VelSockTools::Failure OpeningFailure(const VelNet::SocketXt& socket,
                                     const VelNet::Exception& exception,
                                     const Arguments& arguments);

}  // namespace VelSockCat

// How the program comes by an extended socket, which speaks IPv4 or IPv6 by host and port text.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelNet/Exception.h>
#include <VelNet/SocketXt.h>

#include <string>

#include "Arguments.h"
#include "ClassicSocket.h"
#include "Failure.h"

namespace VelSockCat {

VelBase::ReturnPtrI<VelNet::SocketXt> CreateExtended(Kind kind);

// Throws Failure with NameNotResolvable or NotConnected.
void ConnectExtended(VelNet::SocketXt& socket, const Arguments& arguments);
void BindExtended(VelNet::SocketXt& socket, const Arguments& arguments);

// The text of one of the socket's own special addresses.
std::string SpecialAddressOf(const VelNet::SocketXt& socket, VelNet::SpecialAddressKind kind);

// Why the socket did not fit the address, if that was it: its IP version follows from this
// computer's name and from nothing on the command line. Empty otherwise.
std::string RemarkOnVersion(const VelNet::SocketXt& socket, const VelNet::Exception& exception);

// A failure before anything was transferred.
VelSockTools::Failure OpeningFailure(const VelNet::SocketXt& socket,
                                     const VelNet::Exception& exception);

}  // namespace VelSockCat

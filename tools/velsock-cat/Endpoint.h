// Helpers for both socket classes.
#pragma once

#include <VelNet/Socket.h>
#include <VelNet/SocketXt.h>

#include <string>

#include "Arguments.h"
#include "Events.h"

namespace VelSockCat {

// Returns "HOST port PORT".
std::string EndpointText(const std::string& host, unsigned short port);

// The same for programs.
VelSockTools::JsonObject MembersOf(const std::string& host, unsigned short port);

// Tells "listening on HOST port PORT". Scripts read the port from this line.
void AnnounceListening(const std::string& host, unsigned short port);

// The same for a classic socket, which knows its address.
void AnnounceListening(const VelNet::Socket& classic);

// Tells what people see on request only.
void Remark(const VelSockTools::Event& event);

// The same of a connection to this address, one of the host's.
void RemarkConnected(const std::string& host, const std::string& address, unsigned short port);

// Returns the string of one of the socket's own special addresses.
std::string SpecialAddressOf(const VelNet::SocketXt& socket, VelNet::SpecialAddressKind kind);

void SetTimeouts(VelNet::Socket& socket, const Arguments& arguments);

}  // namespace VelSockCat

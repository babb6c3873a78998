// Helpers for both socket classes.
#pragma once

#include <VelNet/Socket.h>
#include <VelNet/SocketXt.h>

#include <string>

#include "Arguments.h"

namespace VelSockCat {

// Returns "HOST port PORT".
std::string EndpointText(const std::string& host, unsigned short port);

// Prints "listening on HOST port PORT" on standard error. Scripts read the port from this line.
void AnnounceListening(const std::string& host, unsigned short port);

// The same for a classic socket, which knows its address.
void AnnounceListening(const VelNet::Socket& classic);

// Prints a line about what happens, if the program is verbose.
void Remark(const std::string& text);

// Returns the string of one of the socket's own special addresses.
std::string SpecialAddressOf(const VelNet::SocketXt& socket, VelNet::SpecialAddressKind kind);

void SetTimeouts(VelNet::Socket& socket, const Arguments& arguments);

}  // namespace VelSockCat

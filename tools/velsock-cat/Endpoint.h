// Helpers for both socket classes.
#pragma once

#include <VelNet/Socket.h>

#include <string>

#include "Arguments.h"

namespace VelSockCat {

// Prints "listening on HOST port PORT" on standard error. Scripts read the port from this line.
void AnnounceListening(const std::string& host, unsigned short port);

// The same for a classic socket, which knows its address.
void AnnounceListening(const VelNet::Socket& classic);

void SetTimeouts(VelNet::Socket& socket, const Arguments& arguments);

}  // namespace VelSockCat

// Transfers datagrams between the standard streams and the network.
#pragma once

#include "Arguments.h"

namespace VelSockCat {

// Sends each read of standard input as a datagram until the input or the count ends. Both functions
// throw Failure, and what the library throws.
void SendDatagrams(const Arguments& arguments);

// Writes each datagram to standard output until the count ends.
void ReceiveDatagrams(const Arguments& arguments);

}  // namespace VelSockCat

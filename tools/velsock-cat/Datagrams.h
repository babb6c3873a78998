// The transfer of datagrams between the standard streams and the network.
#pragma once

#include "Arguments.h"

namespace VelSockCat {

// Each read of standard input becomes a datagram, until the input or the count ends. Both functions
// throw Failure, and what the library throws.
void SendDatagrams(const Arguments& arguments);

// Each datagram goes to standard output, until the count ends.
void ReceiveDatagrams(const Arguments& arguments);

}  // namespace VelSockCat

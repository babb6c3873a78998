// What the failures of a transfer mean to this program.
#pragma once

#include <VelNet/Exception.h>

#include <string>

#include "Failure.h"

namespace VelSockCat {

// TimedOut, NameNotResolvable or ConnectionLost.
VelSockTools::Failure TransferFailure(const VelNet::Exception& exception,
                                      const std::string& remark = "");

// Whether a Receive failed because the system had no byte: the peer of a stream has closed the
// connection, or a datagram was empty.
bool IsNothingReceived(const VelNet::Exception& exception);

}  // namespace VelSockCat

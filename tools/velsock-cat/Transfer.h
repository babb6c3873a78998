// Interprets the failures of a transfer.
#pragma once

#include <VelNet/Exception.h>

#include <string>

#include "Addresses.h"
#include "Failure.h"

namespace VelSockCat {

// Returns TimedOut, NameNotResolvable or ConnectionLost: what could not be done, and why.
VelSockTools::Failure TransferFailure(const std::string& what, const VelNet::Exception& exception);
VelSockTools::Failure TransferFailure(const std::string& what, const VelNet::Exception& exception,
                                      const std::string& reason);

// The exit code of a failure before any transfer: NameNotResolvable, TimedOut or NotConnected.
VelSockTools::ExitCode OpeningCodeOf(const VelNet::Exception& exception);

// Such a failure: what could not be done, and why none of the addresses would do.
VelSockTools::Failure OpeningFailure(const std::string& what, const Refusal& refusal);

// Whether a Receive into a buffer that is not empty failed only because no byte came: the peer of a
// stream has closed the connection in an orderly way, or a datagram was empty. See Socket::Receive.
bool IsNothingReceived(const VelNet::Exception& exception);

}  // namespace VelSockCat

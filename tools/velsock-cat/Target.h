// Connects to a host of either IP version, with a socket of the version that each address needs.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelNet/SocketXt.h>

#include <chrono>
#include <string>

#include "Addresses.h"
#include "ClassicSocket.h"

namespace VelSockCat {

// All addresses of the host, or those of the version if that is not FAMILY_UNKNOWN.
Addresses AddressesOf(const std::string& host, VelNet::SocketXt::ADDR_FAMILY version,
                      const VelCompanion::Deadline& deadline);

struct Connected {
    VelBase::ReturnPtrI<VelNet::SocketXt> socket;
    std::string address;
    std::chrono::duration<double> connecting;
};

// Connects to the first address that accepts. Throws Failure with NameNotResolvable, NotConnected
// or TimedOut.
Connected ConnectToAny(Kind kind, const Addresses& addresses, const std::string& host,
                       unsigned short port, const VelCompanion::Deadline& deadline);

}  // namespace VelSockCat

// The product's setting that names an IP version.
#pragma once

#include "VelNet/SocketXt.h"

namespace VelNet {

// Reads the installation's settings: FAMILY_IPV6 when they ask for it, FAMILY_IPV4 in every other
// case, unreadable settings included. Throws std::bad_alloc.
SocketXt::ADDR_FAMILY ReadIpVersion();

}  // namespace VelNet

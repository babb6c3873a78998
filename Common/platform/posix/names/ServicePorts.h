// The ports of services.
#pragma once

#include "errors/WinsockError.h"

#include <netdb.h>

#include <cstdint>

namespace Posix {

// Finds the port of a service, given as a number or by its name in any case; 0 if it is null. The
// hints select the protocol's names. Returns a Winsock error or None.
WinsockError FindPort(const char* service, const addrinfo& hints, std::uint16_t& port);

}  // namespace Posix

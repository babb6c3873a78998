// The ports of services.
#pragma once

#include <netdb.h>

#include <cstdint>

namespace Posix {

// Finds the port of a service, given as a number or by its name in any case; 0 if it is null. The
// hints select the protocol's names. Returns a Winsock error or 0.
int FindPort(const char* service, const addrinfo& hints, std::uint16_t& port);

}  // namespace Posix

// The ports of services.
#pragma once

#include <netdb.h>

#include <cstdint>

namespace Posix {

// The port of a service that is given by its number or by its name, in any case; without a text it
// is 0. The hints tell whose table of names counts. The result is a Winsock error or 0.
int FindPort(const char* service, const addrinfo& hints, std::uint16_t& port);

}  // namespace Posix

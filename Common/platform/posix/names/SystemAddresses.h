// The address lists of the system's resolver.
#pragma once

#include "sockets/KernelAddress.h"

#include <netdb.h>

#include <memory>

namespace Posix {

struct SystemListFreer {
    void operator()(addrinfo* list) const noexcept { ::freeaddrinfo(list); }
};
using SystemList = std::unique_ptr<addrinfo, SystemListFreer>;

// Null stands for an omitted string. A list that is found has at least one address. Returns a
// Winsock error or None.
WinsockError FindSystemAddresses(const char* host, const char* service, const addrinfo& hints,
                                 SystemList& found);

KernelAddress AddressOf(const addrinfo& info) noexcept;

}  // namespace Posix

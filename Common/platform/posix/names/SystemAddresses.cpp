#include "names/SystemAddresses.h"

#include "names/ResolverErrors.h"

#include <cstring>

namespace Posix {

int FindSystemAddresses(const char* host, const char* service, const addrinfo& hints,
                        SystemList& found) {
    return Ask([&] {
        addrinfo* list = nullptr;
        const int error = ::getaddrinfo(host, service, &hints, &list);
        if (error == 0) found.reset(list);
        return error;
    });
}

KernelAddress AddressOf(const addrinfo& info) noexcept {
    KernelAddress address = {};
    const bool ipv6 = info.ai_family == AF_INET6;
    std::memcpy(&address, info.ai_addr, ipv6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in));
    return address;
}

}  // namespace Posix

#include "names/SystemAddresses.h"

#include "names/ResolverErrors.h"

namespace Posix {

WinsockError FindSystemAddresses(const char* host, const char* service, const addrinfo& hints,
                                 SystemList& found) {
    return Ask([&] {
        addrinfo* list = nullptr;
        const int error = ::getaddrinfo(host, service, &hints, &list);
        if (error == 0) found.reset(list);
        return error;
    });
}

KernelAddress AddressOf(const addrinfo& info) noexcept {
    return CopyAddress(info.ai_addr);
}

}  // namespace Posix

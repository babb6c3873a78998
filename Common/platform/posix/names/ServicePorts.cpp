#include "names/ServicePorts.h"

#include "errors/Errors.h"
#include "names/NumericHosts.h"
#include "names/SystemAddresses.h"
#include "names/SystemTable.h"

#include <string>
#include <string_view>

namespace Posix {

namespace {

WinsockError AskForPort(const char* service, const addrinfo& hints, std::uint16_t& port) {
    SystemList found;
    const WinsockError error = FindSystemAddresses(nullptr, service, hints, found);
    if (!IsError(error)) port = PortOf(AddressOf(*found));
    return error;
}

// The system's look-up is case-sensitive, so it is asked for each spelling in the table.
WinsockError AskForPortAsSpelled(const char* service, const addrinfo& hints, std::uint16_t& port) {
    WinsockError error = WinsockError::ServiceNotFound;
    SystemTable services("/etc/services");
    for (std::string_view line; error == WinsockError::ServiceNotFound && services.Next(line);) {
        const std::string spelling(SpellingIn(line, service));
        if (!spelling.empty()) error = AskForPort(spelling.c_str(), hints, port);
    }
    return error;
}

}  // namespace

WinsockError FindPort(const char* service, const addrinfo& hints, std::uint16_t& port) {
    port = 0;
    if (service == nullptr || *service == '\0' || ParseNumericPort(service, port))
        return WinsockError::None;
    const WinsockError error = AskForPort(service, hints, port);
    if (error != WinsockError::ServiceNotFound) return error;
    return AskForPortAsSpelled(service, hints, port);
}

}  // namespace Posix

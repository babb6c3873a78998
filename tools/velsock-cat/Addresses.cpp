#include "Addresses.h"

#include <algorithm>

#include "Endpoint.h"
#include "Failure.h"
#include "SystemNetwork.h"

namespace VelSockCat {

namespace {

using VelNet::SocketXt;

char Lowered(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
}

// The library resolves the local host's own name in its own way.
bool IsOwnName(const SocketXt& socket, const std::string& host) {
    const std::string own = SpecialAddressOf(socket, VelNet::SPECIAL_THIS_MACHINE);
    return std::equal(host.begin(), host.end(), own.begin(), own.end(),
                      [](char one, char other) { return Lowered(one) == Lowered(other); });
}

std::string WhyPassedOver(const VelSockTools::HostAddress& address, bool socketIsIpv6) {
    return address.text + ": not tried, the socket speaks " + (socketIsIpv6 ? "IPv6" : "IPv4");
}

}  // namespace

// Where no address fits, and where the system knows none, the library tells why.
Addresses AddressesFor(const SocketXt& socket, const std::string& host) {
    if (IsOwnName(socket, host)) return {{host}, {}};
    const SocketXt::ADDR_FAMILY family = socket.GetAddressFamily();
    Addresses addresses;
    for (const VelSockTools::HostAddress& address : VelSockTools::FindAddresses(host)) {
        if (address.family == family) {
            addresses.usable.push_back(address.text);
        } else {
            addresses.passedOver.push_back(WhyPassedOver(address, family == SocketXt::FAMILY_IPV6));
        }
    }
    if (addresses.usable.empty()) addresses.usable.push_back(host);
    return addresses;
}

std::optional<Refusal> TryEach(const Addresses& addresses,
                               const std::function<void(const std::string&)>& attempt,
                               const VelCompanion::Deadline& deadline) {
    std::optional<VelNet::Exception> last;
    std::vector<std::string> attempts;
    for (const std::string& address : addresses.usable) {
        if (last && deadline.IsOver()) {
            attempts.push_back(address + ": not tried, the time was over");
            continue;
        }
        try {
            attempt(address);
            for (const std::string& line : attempts)
                Remark(line);
            return {};
        } catch (const VelNet::Exception& exception) {
            last.emplace(exception);
            attempts.push_back(address + ": " + VelSockTools::ReasonOf(exception));
        }
    }
    attempts.insert(attempts.end(), addresses.passedOver.begin(), addresses.passedOver.end());
    return Refusal{*last, attempts};
}

}  // namespace VelSockCat

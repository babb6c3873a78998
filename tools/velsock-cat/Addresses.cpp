#include "Addresses.h"

#include <VelBase/TextConversions.h>

#include <algorithm>

#include "Endpoint.h"
#include "Failure.h"
#include "Within.h"

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

VelNet::Exception FailureOf(const std::string& host, VelNet::SOCKET_ERR error) {
    const std::string text = "The system's resolver has no address of " + host;
    return {VelBase::UTF8ToWideChar(text.c_str(), false).c_str(), error};
}

VelNet::Exception LateFailureOf(const std::string& host) {
    const std::string text = "The system's resolver has not answered in time: " + host;
    return {VelBase::UTF8ToWideChar(text.c_str(), false).c_str(), VelNet::SOCKET_ERR_TIMEDOUT};
}

void RemarkAttempt(const std::string& attempt) {
    VelSockTools::JsonObject members;
    members.AddText("text", attempt);
    Remark({"attempt", attempt, members});
}

}  // namespace

LookedUp LookUpWithin(const std::string& host, const VelCompanion::Deadline& deadline) {
    const auto found = Within(deadline, [host] { return VelSockTools::FindAddresses(host); });
    if (!found) return {{}, LateFailureOf(host)};
    if (found->addresses.empty()) return {{}, FailureOf(host, found->failure)};
    return {found->addresses, {}};
}

// Where the name has addresses and none fits, the library tells why.
Addresses AddressesFor(const SocketXt& socket, const std::string& host,
                       const VelCompanion::Deadline& deadline) {
    if (IsOwnName(socket, host)) return {{host}, {}, {}};
    const SocketXt::ADDR_FAMILY family = socket.GetAddressFamily();
    const LookedUp found = LookUpWithin(host, deadline);
    Addresses addresses = {{}, {}, found.failure};
    for (const VelSockTools::HostAddress& address : found.addresses) {
        if (address.family == family) {
            addresses.usable.push_back(address.text);
        } else {
            addresses.passedOver.push_back(WhyPassedOver(address, family == SocketXt::FAMILY_IPV6));
        }
    }
    if (addresses.usable.empty() && !found.failure) addresses.usable.push_back(host);
    return addresses;
}

std::optional<Refusal> TryEach(const Addresses& addresses,
                               const std::function<void(const std::string&)>& attempt,
                               const VelCompanion::Deadline& deadline) {
    std::optional<VelNet::Exception> last = addresses.failure;
    std::vector<std::string> attempts;
    for (const std::string& address : addresses.usable) {
        if (last && deadline.IsOver()) {
            attempts.push_back(address + ": not tried, the time was over");
            continue;
        }
        try {
            attempt(address);
            for (const std::string& line : attempts)
                RemarkAttempt(line);
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

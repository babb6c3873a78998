#include "Addresses.h"

#include <Platform/Winsock.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "Call.h"

namespace Scripted {

namespace {

struct Parts {
    std::string host;
    std::string port;
};

template <class Address>
Address Copied(const void* address) {
    Address copy{};
    std::memcpy(&copy, address, sizeof copy);
    return copy;
}

std::string PortText(const unsigned char (&port)[2]) {
    return std::to_string(port[0] * 256 + port[1]);
}

Parts Ipv4Parts(const Winsock::AddressIpv4& address) {
    std::string host;
    for (const unsigned char number : address.address)
        host += std::to_string(number) + '.';
    host.pop_back();
    return {host, PortText(address.port)};
}

Parts Ipv6Parts(const Winsock::AddressIpv6& address) {
    std::string host;
    for (std::size_t group = 0; group < sizeof address.address; group += 2)
        host += HexNumber(address.address[group] * 256 + address.address[group + 1]) + ':';
    host.pop_back();
    if (address.scope != 0) host += '%' + std::to_string(address.scope);
    return {host, PortText(address.port)};
}

bool Has(int family, std::size_t size, const void* address, int length) {
    if (address == nullptr || length < static_cast<int>(size)) return false;
    return Copied<unsigned short>(address) == family;
}

std::optional<Parts> PartsOf(const void* address, int length) {
    if (Has(Winsock::FamilyIpv4, sizeof(Winsock::AddressIpv4), address, length))
        return Ipv4Parts(Copied<Winsock::AddressIpv4>(address));
    if (!Has(Winsock::FamilyIpv6, sizeof(Winsock::AddressIpv6), address, length)) return {};
    const auto ipv6 = Copied<Winsock::AddressIpv6>(address);
    return ipv6.flowInformation == 0 ? Ipv6Parts(ipv6) : std::optional<Parts>();
}

}  // namespace

std::string AddressText(const void* address, int length) {
    if (address == nullptr) return "null";
    const std::optional<Parts> parts = PartsOf(address, length);
    if (!parts) return HexBytes(address, length);
    const bool ipv6 = parts->host.find(':') != std::string::npos;
    return (ipv6 ? '[' + parts->host + ']' : parts->host) + ':' + parts->port;
}

std::string AddressHost(const void* address, int length) {
    return PartsOf(address, length).value_or(Parts{}).host;
}

std::string AddressPort(const void* address, int length) {
    return PartsOf(address, length).value_or(Parts{}).port;
}

void ReportAddress(const std::string& reported, void* address, int* length) {
    if (address == nullptr || length == nullptr) return;
    const auto room = static_cast<std::size_t>(std::max(*length, 0));
    std::memcpy(address, reported.data(), std::min(room, reported.size()));
    *length = static_cast<int>(reported.size());
}

}  // namespace Scripted

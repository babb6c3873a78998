#include "Route.h"

#include <algorithm>

#include "Printable.h"

namespace VelSockTrace {

namespace {

constexpr unsigned int FirstPort = 49152;
constexpr unsigned int PortCount = 16384;

IpAddress MadeUp(int version, bool isLoopback, std::size_t end) {
    const std::string number = isLoopback ? "1" : std::to_string(end + 1);
    const std::string ipv4 = isLoopback ? "127.0.0." : "192.0.2.";
    const std::string ipv6 = isLoopback ? "::" : "2001:db8::";
    return *ReadIpAddress((version == 4 ? ipv4 : ipv6) + number);
}

// An IPv4 address beside an IPv6 one.
IpAddress Mapped(const IpAddress& address) {
    IpAddress mapped;
    mapped.version = 6;
    mapped.bytes[10] = mapped.bytes[11] = 0xFF;
    std::copy_n(address.bytes.begin(), 4, mapped.bytes.begin() + 12);
    return mapped;
}

int VersionOf(const std::array<Endpoint, 2>& ends) noexcept {
    const int version = std::max(ends[0].address.version, ends[1].address.version);
    return version == 0 ? 4 : version;
}

}  // namespace

Routes RoutesOf(const Conversation& conversation) {
    Routes routes{conversation.ends, ""};
    const int version = VersionOf(routes.ends);
    const bool isLoopback =
        std::any_of(routes.ends.begin(), routes.ends.end(),
                    [](const Endpoint& end) { return IsLoopback(end.address); });
    for (const std::size_t index : {0U, 1U}) {
        Endpoint& end = routes.ends[index];
        if (!end.IsExact()) routes.remark += "; " + Printable(Name(end)) + " is not known in full";
        if (end.address.version == 0) end.address = MadeUp(version, isLoopback, index);
        if (end.address.version != version) end.address = Mapped(end.address);
        const auto offset = (conversation.number + static_cast<unsigned int>(index)) % PortCount;
        if (end.port == 0) end.port = static_cast<std::uint16_t>(FirstPort + offset);
    }
    return routes;
}

}  // namespace VelSockTrace

// An end of a conversation, as far as the records tell.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace VelSockTrace {

struct IpAddress {
    int version = 0;                           // 4 or 6; 0 if none is known
    std::array<unsigned char, 16> bytes = {};  // in network order; of IPv4, the first four

    bool operator==(const IpAddress&) const = default;
};

// Returns nothing if the text is neither a dotted IPv4 address nor an IPv6 address. A zone is
// ignored.
std::optional<IpAddress> ReadIpAddress(std::string_view text) noexcept;

bool IsLoopback(const IpAddress& address) noexcept;

struct Endpoint {
    std::string host;        // as recorded: an address, a name, or nothing
    IpAddress address;       // unknown for a name, and for 0.0.0.0 and ::
    std::uint16_t port = 0;  // 0 if it is not known

    Endpoint() = default;
    Endpoint(std::string_view host, std::string_view port);

    bool IsExact() const noexcept { return address.version != 0 && port != 0; }
    bool operator==(const Endpoint&) const = default;
};

// "127.0.0.1:4000", "[::1]:4000"; "?" for what is not known.
std::string Name(const Endpoint& end);

// Whether both may be the same: nothing that is known of both differs.
bool MayBeSame(const Endpoint& one, const Endpoint& other) noexcept;

// Whether the address or the port is known of both and the same.
bool HaveInCommon(const Endpoint& one, const Endpoint& other) noexcept;

// Returns the first one, with what only the other knows.
Endpoint Completed(const Endpoint& one, const Endpoint& other);

// Returns the same text for the same two ends in either order, and another one for all others.
std::string ExactKey(const Endpoint& one, const Endpoint& other);

struct Ends {
    Endpoint local;
    Endpoint remote;
};

// Reads "127.0.0.1 (4000), Remote address: 127.0.0.1 (40123)". What has another form is left empty.
Ends ReadEnds(std::string_view text);

}  // namespace VelSockTrace

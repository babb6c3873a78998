// Numeric hosts and ports, which are needed for every datagram that is sent or received. The
// system's resolver knows them too, but is slower.
#pragma once

#include "sockets/KernelAddress.h"

#include <arpa/inet.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Posix {

// Parses four decimal numbers without leading zeros, or an IPv6 literal without a scope, with port
// 0. Returns false for every other string, even if the system accepts it.
bool ParseNumericHost(const char* text, KernelAddress& address) noexcept;

// Parses one to five digits, modulo 65536. Returns false for every other string.
bool ParseNumericPort(const char* text, std::uint16_t& port) noexcept;

// A text without a terminator.
template <std::size_t Size>
struct NumericText {
    char text[Size];
    std::size_t length;

    operator std::string_view() const noexcept { return {text, length}; }
};
using HostText = NumericText<INET6_ADDRSTRLEN + sizeof "%4294967295">;
using PortText = NumericText<sizeof "65535">;

// A scope is written as a number, never as an interface's name.
HostText FormatNumericHost(const KernelAddress& address) noexcept;
PortText FormatNumericPort(std::uint16_t number) noexcept;

}  // namespace Posix

// Hosts and ports as numbers, which every datagram that is sent or received asks for. The system's
// resolver knows these, too, but takes longer.
#pragma once

#include "sockets/KernelAddress.h"

#include <arpa/inet.h>

#include <cstdint>

namespace Posix {

// The address that a text stands for: four decimal numbers without leading zeroes, or an IPv6
// literal without a scope. The port is 0. False for every other text, though the system may have a
// meaning for it.
bool ParseNumericHost(const char* text, KernelAddress& address) noexcept;

// The port that one to five digits stand for, the last 16 bits of it. False for every other text.
bool ParseNumericPort(const char* text, std::uint16_t& port) noexcept;

struct HostText {
    char text[INET6_ADDRSTRLEN + sizeof "%4294967295"];
};
struct PortText {
    char text[sizeof "65535"];
};

// A scope follows as a number, never as an interface's name.
HostText FormatNumericHost(const KernelAddress& address) noexcept;
PortText FormatNumericPort(std::uint16_t port) noexcept;

}  // namespace Posix

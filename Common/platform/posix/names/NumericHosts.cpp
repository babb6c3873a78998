#include "names/NumericHosts.h"

#include "Text/Decimal.h"

#include <charconv>
#include <cstddef>
#include <cstring>

namespace Posix {

namespace {

constexpr std::size_t MostPortDigits = 5;

bool IsDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

// Takes a number of 0 to 255 without leading zeros. Returns where it ends, or null.
const char* TakeOctet(const char* text, unsigned char& octet) noexcept {
    constexpr std::ptrdiff_t MostDigits = 3;
    const char* end = text;
    unsigned int value = 0;
    for (; IsDigit(*end) && end - text < MostDigits; ++end)
        value = value * 10 + static_cast<unsigned int>(*end - '0');
    octet = static_cast<unsigned char>(value);
    const bool leadingZero = *text == '0' && end - text > 1;
    return end == text || leadingZero || value > 255 ? nullptr : end;
}

// Accepts what inet_pton accepts, in fewer instructions.
bool ParseIpv4(const char* text, KernelAddress& address) noexcept {
    unsigned char octets[sizeof(in_addr)];
    for (unsigned char& octet : octets) {
        if (&octet != octets && *text++ != '.') return false;
        text = TakeOctet(text, octet);
        if (text == nullptr) return false;
    }
    address = {};
    address.ipv4.sin_family = AF_INET;
    std::memcpy(&address.ipv4.sin_addr, octets, sizeof octets);
    return *text == '\0';
}

bool ParseIpv6(const char* text, KernelAddress& address) noexcept {
    address = {};
    address.ipv6.sin6_family = AF_INET6;
    return ::inet_pton(AF_INET6, text, &address.ipv6.sin6_addr) == 1;
}

// Each returns the end. inet_ntop would interpret a format string for each number.
char* PutDotted(const in_addr& address, char* text) noexcept {
    unsigned char octets[sizeof address];
    std::memcpy(octets, &address, sizeof address);
    return Text::PutDotted(text, octets);
}

char* PutIpv6(const sockaddr_in6& address, char* text) noexcept {
    ::inet_ntop(AF_INET6, &address.sin6_addr, text, INET6_ADDRSTRLEN);
    char* end = text + std::strlen(text);
    if (address.sin6_scope_id == 0) return end;
    *end++ = '%';
    return std::to_chars(end, end + sizeof "4294967295", address.sin6_scope_id).ptr;
}

}  // namespace

bool ParseNumericHost(const char* text, KernelAddress& address) noexcept {
    return ParseIpv4(text, address) || ParseIpv6(text, address);
}

bool ParseNumericPort(const char* text, std::uint16_t& port) noexcept {
    unsigned int value = 0;
    std::size_t count = 0;
    for (; count < MostPortDigits && IsDigit(text[count]); ++count) {
        value = value * 10 + static_cast<unsigned int>(text[count] - '0');
    }
    port = static_cast<std::uint16_t>(value);
    return count > 0 && text[count] == '\0';
}

HostText FormatNumericHost(const KernelAddress& address) noexcept {
    HostText host;
    char* const end = address.any.sa_family == AF_INET ? PutDotted(address.ipv4.sin_addr, host.text)
                                                       : PutIpv6(address.ipv6, host.text);
    host.length = static_cast<std::size_t>(end - host.text);
    return host;
}

PortText FormatNumericPort(std::uint16_t number) noexcept {
    PortText port;
    char* const end = std::to_chars(port.text, port.text + sizeof port.text, number).ptr;
    port.length = static_cast<std::size_t>(end - port.text);
    return port;
}

}  // namespace Posix

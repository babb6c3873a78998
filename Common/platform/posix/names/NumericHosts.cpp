#include "names/NumericHosts.h"

#include <charconv>
#include <cstring>

namespace Posix {

namespace {

constexpr std::size_t MostPortDigits = 5;

bool IsDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

bool ParseIpv4(const char* text, KernelAddress& address) noexcept {
    address = {};
    address.ipv4.sin_family = AF_INET;
    return ::inet_pton(AF_INET, text, &address.ipv4.sin_addr) == 1;
}

bool ParseIpv6(const char* text, KernelAddress& address) noexcept {
    address = {};
    address.ipv6.sin6_family = AF_INET6;
    return ::inet_pton(AF_INET6, text, &address.ipv6.sin6_addr) == 1;
}

// inet_ntop would interpret a format string for each number.
void WriteDotted(const in_addr& address, char* text, char* last) noexcept {
    unsigned char octets[sizeof address];
    std::memcpy(octets, &address, sizeof address);
    for (const unsigned char octet : octets) {
        text = std::to_chars(text, last, octet).ptr;
        *text++ = '.';
    }
    *--text = '\0';
}

}  // namespace

bool ParseNumericHost(const char* text, KernelAddress& address) noexcept {
    return ParseIpv4(text, address) || ParseIpv6(text, address);
}

bool ParseNumericPort(const char* text, std::uint16_t& port) noexcept {
    unsigned int value = 0;
    std::size_t count = 0;
    for (; IsDigit(text[count]) && count < MostPortDigits; ++count) {
        value = value * 10 + static_cast<unsigned int>(text[count] - '0');
    }
    port = static_cast<std::uint16_t>(value);
    return count > 0 && text[count] == '\0';
}

HostText FormatNumericHost(const KernelAddress& address) noexcept {
    HostText host = {};
    char* const last = host.text + sizeof host.text - 1;
    if (address.any.sa_family == AF_INET) {
        WriteDotted(address.ipv4.sin_addr, host.text, last);
        return host;
    }
    ::inet_ntop(AF_INET6, &address.ipv6.sin6_addr, host.text, sizeof host.text);
    if (address.ipv6.sin6_scope_id == 0) return host;
    char* end = host.text + std::strlen(host.text);
    *end++ = '%';
    std::to_chars(end, last, address.ipv6.sin6_scope_id);
    return host;
}

PortText FormatNumericPort(std::uint16_t port) noexcept {
    PortText text = {};
    std::to_chars(text.text, text.text + sizeof text.text - 1, port);
    return text;
}

}  // namespace Posix

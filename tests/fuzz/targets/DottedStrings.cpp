// Dotted strings, against the rules of Winsock's inet_addr as they are written in its manual and
// found by trial: one to four numbers in C's notations, the last one filling the bytes that are
// left; what follows a blank plays no part.
#include <VelNet/Exception.h>
#include <VelNet/SocketAddress.h>

#include <cstdint>
#include <cstdio>
#include <optional>
#include <vector>

#include "fuzz/Fuzzing.h"
#include "support/Text.h"

namespace {

constexpr std::string_view Blanks = " \t\n\v\f\r";

std::optional<std::uint64_t> Value(std::string_view digits, unsigned int base) {
    constexpr std::string_view Digits = "0123456789abcdefABCDEF";
    std::uint64_t value = 0;
    for (const char character : digits) {
        std::size_t digit = Digits.find(character);
        if (digit > 15 && digit != std::string_view::npos) digit -= 6;
        if (digit >= base) return {};
        value = value * base + digit;
        if (value > 0xFFFFFFFF) return {};
    }
    return value;
}

std::optional<std::uint64_t> NumberOf(std::string_view part) {
    if (part.empty()) return {};
    if (part.front() != '0' || part.size() == 1) return Value(part, 10);
    if (part[1] != 'x' && part[1] != 'X') return Value(part.substr(1), 8);
    return part.size() > 2 ? Value(part.substr(2), 16) : std::nullopt;
}

std::vector<std::string_view> Parts(std::string_view text) {
    std::vector<std::string_view> parts;
    for (std::size_t end = 0; end != std::string_view::npos; text.remove_prefix(end + 1)) {
        end = text.find('.');
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) break;
    }
    return parts;
}

// The address with the first number in its highest byte.
std::optional<std::uint64_t> AddressOf(std::string_view text) {
    if (text == " ") return 0;
    const std::vector<std::string_view> parts = Parts(text.substr(0, text.find_first_of(Blanks)));
    if (parts.size() > 4) return {};
    std::uint64_t address = 0;
    for (std::size_t index = 0; index < parts.size(); ++index) {
        const std::size_t bytes = index + 1 < parts.size() ? 1 : 4 - index;
        const std::optional<std::uint64_t> number = NumberOf(parts[index]);
        if (!number || *number >> (8 * bytes) != 0) return {};
        address = address << (8 * bytes) | *number;
    }
    if (address == 0xFFFFFFFF) return {};
    return address;
}

std::string DottedForm(std::uint64_t address) {
    char text[16];
    std::snprintf(text, sizeof text, "%u.%u.%u.%u", static_cast<unsigned int>(address >> 24) & 255,
                  static_cast<unsigned int>(address >> 16) & 255,
                  static_cast<unsigned int>(address >> 8) & 255,
                  static_cast<unsigned int>(address) & 255);
    return text;
}

bool IsAscii(const std::string& text) {
    for (const char character : text)
        if (static_cast<unsigned char>(character) > 0x7F) return false;
    return true;
}

void ExpectFailure(const std::string& text, const VelNet::Exception& failure) {
    Fuzz::Expect("the code", -1, static_cast<int>(failure.GetErrorCode()));
    // What else a text can hold is the system's code page.
    if (!IsAscii(text)) return;
    Fuzz::Expect("the failure",
                 u"VelNet::SocketAddress::ConvertDottedStringToOctets() - FAIL. The input "
                 u"parameter is not an Internet Protocol dotted address: " +
                     Support::Widen(text),
                 Support::Text(failure.GetMessage()));
}

void ExpectAddress(std::uint64_t address, const VelNet::Octets& octets) {
    const std::string dotted = DottedForm(address);
    Fuzz::Expect<std::string>("the dotted form", dotted, octets.GetAddressString().c_str());
    Fuzz::Expect("the number", address, std::uint64_t{octets.GetAddress()});
    const VelNet::Octets again = VelNet::SocketAddress::ConvertDottedStringToOctets(dotted.c_str());
    Fuzz::Expect("whether the dotted form means the same", true, again == octets);
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string text = Fuzz::CText(Fuzz::Input(data, size).Rest());
    const std::optional<std::uint64_t> expected = AddressOf(text);
    try {
        const auto octets = VelNet::SocketAddress::ConvertDottedStringToOctets(text.c_str());
        Fuzz::Expect("whether it is an address", expected.has_value(), true);
        ExpectAddress(*expected, octets);
    } catch (const VelNet::Exception& failure) {
        Fuzz::Expect("whether it is an address", expected.has_value(), false);
        ExpectFailure(text, failure);
    }
    return 0;
}

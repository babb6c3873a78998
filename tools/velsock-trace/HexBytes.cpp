#include "HexBytes.h"

#include <algorithm>
#include <array>

namespace VelSockTrace {

namespace {

constexpr int NoByte = -1;

constexpr auto DigitValues = [] {
    std::array<signed char, 256> values{};
    values.fill(NoByte);
    for (std::size_t digit = 0; digit < 10; ++digit)
        values['0' + digit] = static_cast<signed char>(digit);
    for (std::size_t digit = 10; digit < 16; ++digit) {
        values['A' + digit - 10] = static_cast<signed char>(digit);
        values['a' + digit - 10] = static_cast<signed char>(digit);
    }
    return values;
}();

int ValueOf(char digit) noexcept {
    return DigitValues[static_cast<unsigned char>(digit)];
}

// Returns the byte of the first two digits, or NoByte.
int TwoDigits(std::string_view digits) noexcept {
    if (digits.size() < 2) return NoByte;
    const int high = ValueOf(digits[0]);
    const int low = ValueOf(digits[1]);
    return high < 0 || low < 0 ? NoByte : 16 * high + low;
}

int TakeByte(std::string_view& digits) noexcept {
    int byte = TwoDigits(digits);
    const bool isExtended = byte > 0x7F;
    if (isExtended) {
        if (!digits.starts_with("FFFFFF")) return NoByte;
        digits.remove_prefix(6);
        byte = TwoDigits(digits);
    }
    if (byte < 0 || (isExtended && byte < 0x80)) return NoByte;
    digits.remove_prefix(2);
    return byte;
}

}  // namespace

std::string DecodeBytes(std::string_view digits, std::uint64_t skipped, std::uint64_t most) {
    for (; skipped > 0 && TakeByte(digits) >= 0; --skipped) {
    }
    std::string bytes;
    if (skipped > 0) return bytes;
    bytes.reserve(static_cast<std::size_t>(std::min<std::uint64_t>(digits.size() / 2, most)));
    while (bytes.size() < most) {
        const int byte = TakeByte(digits);
        if (byte < 0) break;
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

}  // namespace VelSockTrace

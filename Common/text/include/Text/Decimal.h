// Decimal digits, and the dotted form of IPv4 addresses.
#pragma once

namespace Text {

// Returns where the next character goes.
constexpr char* PutDecimal(char* text, unsigned char number) noexcept {
    if (number >= 100) *text++ = static_cast<char>('0' + number / 100);
    if (number >= 10) *text++ = static_cast<char>('0' + number / 10 % 10);
    *text++ = static_cast<char>('0' + number % 10);
    return text;
}

inline constexpr unsigned int DottedSize = sizeof "255.255.255.255";

// Writes the dotted form and its terminator, DottedSize characters at most. Returns where the
// terminator is.
constexpr char* PutDotted(char* text, const unsigned char (&octets)[4]) noexcept {
    for (const unsigned char octet : octets) {
        text = PutDecimal(text, octet);
        *text++ = '.';
    }
    *--text = '\0';  // in place of the last point
    return text;
}

}  // namespace Text

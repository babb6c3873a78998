// Hexadecimal digits.
#pragma once

namespace Text {

// The digit of the number's lowest four bits, in upper case.
constexpr char HexDigit(unsigned int number) noexcept {
    return "0123456789ABCDEF"[number & 0xF];
}

}  // namespace Text

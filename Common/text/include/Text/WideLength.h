// The length of a wide string.
#pragma once

#include <cstddef>

namespace Text {

// Returns the number of units before the terminator; 0 for null.
constexpr std::size_t WideLength(const unsigned short* text) noexcept {
    if (text == nullptr) return 0;
    std::size_t length = 0;
    while (text[length] != 0)
        ++length;
    return length;
}

}  // namespace Text

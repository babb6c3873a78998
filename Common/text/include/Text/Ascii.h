// Texts of ASCII alone: the same in UTF-8, in UTF-16 and in every code page.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace Text {

// Whether all units are ASCII. Looks at all of them, which takes less than to stop at the first
// other.
bool IsAscii(std::string_view text) noexcept;
bool IsAscii(std::span<const unsigned short> units) noexcept;

// Whether all units are ASCII and none of them is a control character.
bool IsPrintableAscii(std::span<const unsigned short> units) noexcept;

// Writes what precedes the first other character as UTF-16, without a terminator; returns its
// length.
std::size_t PutAscii(unsigned short* units, std::string_view text) noexcept;

}  // namespace Text

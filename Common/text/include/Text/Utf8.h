// Whole strings between UTF-8 and UTF-16. Each maximal broken part becomes U+FFFD.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Text {

// Throw std::bad_alloc.
std::vector<unsigned short> Utf16FromUtf8(std::string_view text);
std::string Utf8FromUtf16(std::span<const unsigned short> units);

// Writes UTF-16 without a terminator and returns its end. UTF-16 never needs more units than UTF-8
// needs bytes; that many units must fit, and may be written to.
unsigned short* PutUtf16(unsigned short* units, std::string_view text) noexcept;

}  // namespace Text

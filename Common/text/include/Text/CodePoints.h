// Code points, read from and written to UTF-8 and UTF-16 one at a time.
//
// Reading takes one code point, or one maximal broken part, from the front of a text that is not
// empty; a broken part reads as U+FFFD. So every step makes the text shorter, and none looks past
// its end.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace Text {

inline constexpr char32_t ReplacementCharacter = 0xFFFD;

char32_t TakeFromUtf8(std::string_view& text) noexcept;
char32_t TakeFromUtf16(std::span<const unsigned short>& text) noexcept;

void AppendToUtf8(std::string& text, char32_t codePoint);

// Writes one unit or two and returns where the next one goes.
unsigned short* PutUtf16(unsigned short* units, char32_t codePoint) noexcept;

}  // namespace Text

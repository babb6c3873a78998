// What UTF-8 and UTF-16 mean, said another way than the library says it: by the code points that
// the beginning of a sequence leaves possible.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Model {

// Takes one code point off the text, or U+FFFD with as much as could have begun one.
char32_t TakeFromUtf8(std::string_view& text);
char32_t TakeFromUtf16(std::span<const unsigned short>& units);

std::string Utf8Of(char32_t codePoint);
std::vector<unsigned short> Utf16Of(char32_t codePoint);

std::u16string Utf16FromUtf8(std::string_view text);

}  // namespace Model

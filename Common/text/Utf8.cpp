#include "Text/Utf8.h"

#include "Text/Ascii.h"
#include "Text/CodePoints.h"

namespace Text {

std::vector<unsigned short> Utf16FromUtf8(std::string_view text) {
    std::vector<unsigned short> units(text.size());
    const unsigned short* const end = PutUtf16(units.data(), text);
    units.resize(static_cast<std::size_t>(end - units.data()));
    return units;
}

std::string Utf8FromUtf16(std::span<const unsigned short> units) {
    if (IsAscii(units)) return {units.begin(), units.end()};
    std::string text;
    text.reserve(units.size());
    while (!units.empty())
        AppendToUtf8(text, TakeFromUtf16(units));
    return text;
}

unsigned short* PutUtf16(unsigned short* units, std::string_view text) noexcept {
    const std::size_t ascii = PutAscii(units, text);
    units += ascii;
    text.remove_prefix(ascii);
    while (!text.empty())
        units = PutUtf16(units, TakeFromUtf8(text));
    return units;
}

}  // namespace Text

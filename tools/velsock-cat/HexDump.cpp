#include "HexDump.h"

#include <array>
#include <cstdio>

#include "Text.h"

namespace VelSockCat {

namespace {

constexpr std::size_t BytesInLine = 16;

bool IsPrintable(char character) {
    return character >= ' ' && character <= '~';
}

std::string OffsetText(unsigned long long offset) {
    std::array<char, 24> text = {};
    std::snprintf(text.data(), text.size(), "%08llX", offset);
    return text.data();
}

std::string DigitsOf(std::string_view bytes) {
    std::string text;
    for (std::size_t index = 0; index < BytesInLine; ++index) {
        text += index == BytesInLine / 2 ? "  " : " ";
        text += index < bytes.size()
                    ? VelSockTools::HexDigits(static_cast<unsigned char>(bytes[index]))
                    : "  ";
    }
    return text;
}

std::string CharactersOf(std::string_view bytes) {
    std::string text;
    for (const char character : bytes)
        text += IsPrintable(character) ? character : '.';
    return text;
}

}  // namespace

std::string HexDump::Lines(std::string_view bytes) {
    std::string lines;
    while (!bytes.empty()) {
        const std::string_view part = bytes.substr(0, BytesInLine);
        lines += prefix_ + " " + OffsetText(offset_) + " " + DigitsOf(part) + "  |" +
                 CharactersOf(part) + "|\n";
        offset_ += part.size();
        bytes.remove_prefix(part.size());
    }
    return lines;
}

}  // namespace VelSockCat

#include "ModelCodec.h"

#include <algorithm>
#include <cstddef>

namespace Model {

namespace {

constexpr char32_t Replacement = 0xFFFD;

// Code points from the first to the last.
struct Range {
    char32_t first;
    char32_t last;
};

// What a sequence of that many bytes may stand for: what no shorter one can, the surrogates aside.
constexpr Range OfTwo[] = {{0x80, 0x7FF}};
constexpr Range OfThree[] = {{0x800, 0xD7FF}, {0xE000, 0xFFFF}};
constexpr Range OfFour[] = {{0x10000, 0x10FFFF}};
constexpr std::span<const Range> Allowed[] = {{}, {}, OfTwo, OfThree, OfFour};

// The bytes that a first byte announces, itself included; 0 for one that begins nothing.
std::size_t LengthAnnouncedBy(unsigned char first) {
    if (first < 0x80) return 1;
    if (first >> 5 == 0b110) return 2;
    if (first >> 4 == 0b1110) return 3;
    return first >> 3 == 0b11110 ? 4 : 0;
}

// Whether these bits, with that many bytes of six bits to come, can still become a code point that
// needs a sequence of that length.
bool MayBecomeOne(char32_t bits, std::size_t missing, std::size_t length) {
    const Range possible = {bits << 6 * missing, ((bits + 1) << 6 * missing) - 1};
    return std::ranges::any_of(Allowed[length], [&](Range allowed) {
        return possible.first <= allowed.last && allowed.first <= possible.last;
    });
}

char32_t TakeSequence(std::string_view& text, std::size_t length) {
    char32_t bits = static_cast<unsigned char>(text[0]) & (0xFFU >> (length + 1));
    std::size_t taken = 1;
    bool possible = MayBecomeOne(bits, length - taken, length);
    while (possible && taken < length) {
        const auto byte = taken < text.size() ? static_cast<unsigned char>(text[taken]) : 0U;
        const char32_t longer = bits << 6 | (byte & 0x3FU);
        possible = byte >> 6 == 0b10 && MayBecomeOne(longer, length - taken - 1, length);
        if (possible) bits = longer, ++taken;
    }
    text.remove_prefix(taken);
    return possible ? bits : Replacement;
}

bool IsPair(std::span<const unsigned short> units) {
    return units.size() > 1 && units[0] / 0x400 == 0x36 && units[1] / 0x400 == 0x37;
}

}  // namespace

char32_t TakeFromUtf8(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t length = LengthAnnouncedBy(first);
    if (length > 1) return TakeSequence(text, length);
    text.remove_prefix(1);
    return length == 1 ? char32_t{first} : Replacement;
}

char32_t TakeFromUtf16(std::span<const unsigned short>& units) {
    const bool pair = IsPair(units);
    const char32_t first = units[0];
    const char32_t second = pair ? units[1] : 0;
    units = units.subspan(pair ? 2 : 1);
    if (pair) return 0x10000 + first % 0x400 * 0x400 + second % 0x400;
    return first / 0x800 == 0x1B ? Replacement : first;
}

// From the last byte to the first: each takes six bits, until what is left fits beside the first
// one's mark.
std::string Utf8Of(char32_t codePoint) {
    if (codePoint < 0x80) return {static_cast<char>(codePoint)};
    std::string bytes;
    char32_t mark = 0xFF80;
    for (char32_t limit = 0x40; codePoint >= limit; codePoint /= 64, limit /= 2, mark /= 2)
        bytes.insert(bytes.begin(), static_cast<char>(0x80 + codePoint % 64));
    bytes.insert(bytes.begin(), static_cast<char>(mark | codePoint));
    return bytes;
}

std::vector<unsigned short> Utf16Of(char32_t codePoint) {
    if (codePoint < 0x10000) return {static_cast<unsigned short>(codePoint)};
    const char32_t offset = codePoint - 0x10000;
    return {static_cast<unsigned short>(0xD800 + offset / 0x400),
            static_cast<unsigned short>(0xDC00 + offset % 0x400)};
}

std::u16string Utf16FromUtf8(std::string_view text) {
    std::u16string units;
    while (!text.empty())
        for (const unsigned short unit : Utf16Of(TakeFromUtf8(text)))
            units += static_cast<char16_t>(unit);
    return units;
}

}  // namespace Model

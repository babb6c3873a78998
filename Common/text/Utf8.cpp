#include "Text/Utf8.h"

namespace Posix {

namespace {

constexpr char32_t Replacement = 0xFFFD;

// How a sequence goes on after its first byte. The bounds of the second byte keep out longer forms
// than needed, surrogates and what lies above Unicode.
struct Sequence {
    char32_t value = Replacement;
    int following = -1;  // -1 for a byte that begins no sequence
    unsigned char lowestSecond = 0x80;
    unsigned char highestSecond = 0xBF;
};

Sequence SequenceFrom(unsigned char first) {
    if (first < 0x80) return {.value = first, .following = 0};
    if (first < 0xC2 || first > 0xF4) return {};
    if (first < 0xE0) return {.value = first & 0x1FU, .following = 1};
    if (first == 0xE0) return {.value = 0, .following = 2, .lowestSecond = 0xA0};
    if (first == 0xED) return {.value = 0xD, .following = 2, .highestSecond = 0x9F};
    if (first < 0xF0) return {.value = first & 0xFU, .following = 2};
    if (first == 0xF0) return {.value = 0, .following = 3, .lowestSecond = 0x90};
    if (first == 0xF4) return {.value = 4, .following = 3, .highestSecond = 0x8F};
    return {.value = first & 7U, .following = 3};
}

// Takes the next character off the text; of a broken sequence, as much as could have begun a whole
// one.
char32_t TakeCharacter(std::string_view& text) {
    Sequence sequence = SequenceFrom(static_cast<unsigned char>(text.front()));
    text.remove_prefix(1);
    unsigned char lowest = sequence.lowestSecond;
    unsigned char highest = sequence.highestSecond;
    for (; sequence.following > 0; --sequence.following) {
        if (text.empty()) return Replacement;
        const auto byte = static_cast<unsigned char>(text.front());
        if (byte < lowest || byte > highest) return Replacement;
        sequence.value = sequence.value << 6U | (byte & 0x3FU);
        text.remove_prefix(1);
        lowest = 0x80;
        highest = 0xBF;
    }
    return sequence.value;
}

void AppendUtf16(std::vector<unsigned short>& units, char32_t character) {
    if (character < 0x10000) {
        units.push_back(static_cast<unsigned short>(character));
        return;
    }
    const char32_t offset = character - 0x10000;
    units.push_back(static_cast<unsigned short>(0xD800U | offset >> 10U));
    units.push_back(static_cast<unsigned short>(0xDC00U | (offset & 0x3FFU)));
}

bool IsHighSurrogate(unsigned short unit) {
    return (unit & 0xFC00U) == 0xD800U;
}

bool IsLowSurrogate(unsigned short unit) {
    return (unit & 0xFC00U) == 0xDC00U;
}

char32_t TakeCharacter(const unsigned short*& next, const unsigned short* end) {
    const unsigned short unit = *next++;
    if (!IsHighSurrogate(unit)) return IsLowSurrogate(unit) ? Replacement : unit;
    if (next == end || !IsLowSurrogate(*next)) return Replacement;
    const unsigned short low = *next++;
    return 0x10000U + ((unit & 0x3FFU) << 10U) + (low & 0x3FFU);
}

void AppendUtf8(std::string& text, char32_t character) {
    const auto append = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (character < 0x80) return append(character);
    if (character < 0x800) {
        append(0xC0U | character >> 6U);
    } else {
        if (character < 0x10000) {
            append(0xE0U | character >> 12U);
        } else {
            append(0xF0U | character >> 18U);
            append(0x80U | (character >> 12U & 0x3FU));
        }
        append(0x80U | (character >> 6U & 0x3FU));
    }
    append(0x80U | (character & 0x3FU));
}

}  // namespace

std::vector<unsigned short> WideFromUtf8(std::string_view text) {
    std::vector<unsigned short> units;
    units.reserve(text.size());
    while (!text.empty())
        AppendUtf16(units, TakeCharacter(text));
    return units;
}

std::string Utf8FromWide(const unsigned short* units, std::size_t count) {
    std::string text;
    text.reserve(count);
    for (const unsigned short *next = units, *end = units + count; next != end;) {
        AppendUtf8(text, TakeCharacter(next, end));
    }
    return text;
}

}  // namespace Posix

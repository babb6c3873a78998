#include "Text/CodePoints.h"

#include <optional>

namespace Text {

namespace {

// What a lead byte announces: how many bytes follow, its own bits, and where the next byte must
// lie. That range is what keeps out overlong forms, surrogates and all above U+10FFFF.
struct Sequence {
    int following;
    char32_t bits;
    unsigned char lowest = 0x80;
    unsigned char highest = 0xBF;
};

std::optional<Sequence> SequenceOf(unsigned char lead) noexcept {
    if (lead < 0xC2 || lead > 0xF4) return std::nullopt;
    if (lead < 0xE0) return Sequence{1, lead & 0x1FU};
    if (lead == 0xE0) return Sequence{2, 0x0, 0xA0, 0xBF};
    if (lead == 0xED) return Sequence{2, 0xD, 0x80, 0x9F};
    if (lead < 0xF0) return Sequence{2, lead & 0x0FU};
    if (lead == 0xF0) return Sequence{3, 0x0, 0x90, 0xBF};
    if (lead == 0xF4) return Sequence{3, 0x4, 0x80, 0x8F};
    return Sequence{3, lead & 0x07U};
}

char32_t TakeFollowing(std::string_view& text, Sequence sequence) noexcept {
    char32_t codePoint = sequence.bits;
    for (; sequence.following > 0; --sequence.following) {
        if (text.empty()) return ReplacementCharacter;
        const auto byte = static_cast<unsigned char>(text.front());
        if (byte < sequence.lowest || byte > sequence.highest) return ReplacementCharacter;
        codePoint = codePoint << 6 | (byte & 0x3FU);
        text.remove_prefix(1);
        sequence.lowest = 0x80;
        sequence.highest = 0xBF;
    }
    return codePoint;
}

bool IsHighSurrogate(char32_t unit) noexcept {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char32_t unit) noexcept {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

char FollowingByte(char32_t bits) noexcept {
    return static_cast<char>(0x80 | (bits & 0x3F));
}

}  // namespace

char32_t TakeFromUtf8(std::string_view& text) noexcept {
    const auto lead = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    if (lead < 0x80) return lead;
    const std::optional<Sequence> sequence = SequenceOf(lead);
    return sequence ? TakeFollowing(text, *sequence) : ReplacementCharacter;
}

char32_t TakeFromUtf16(std::span<const unsigned short>& text) noexcept {
    const char32_t first = text.front();
    text = text.subspan(1);
    if (IsLowSurrogate(first)) return ReplacementCharacter;
    if (!IsHighSurrogate(first)) return first;
    if (text.empty() || !IsLowSurrogate(text.front())) return ReplacementCharacter;
    const char32_t second = text.front();
    text = text.subspan(1);
    return 0x10000 + ((first - 0xD800) << 10 | (second - 0xDC00));
}

void AppendToUtf8(std::string& text, char32_t codePoint) {
    if (codePoint < 0x80) {
        text += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        text += static_cast<char>(0xC0 | codePoint >> 6);
        text += FollowingByte(codePoint);
    } else if (codePoint < 0x10000) {
        text += static_cast<char>(0xE0 | codePoint >> 12);
        text += FollowingByte(codePoint >> 6);
        text += FollowingByte(codePoint);
    } else {
        text += static_cast<char>(0xF0 | codePoint >> 18);
        text += FollowingByte(codePoint >> 12);
        text += FollowingByte(codePoint >> 6);
        text += FollowingByte(codePoint);
    }
}

unsigned short* PutUtf16(unsigned short* units, char32_t codePoint) noexcept {
    if (codePoint >= 0x10000) {
        const char32_t offset = codePoint - 0x10000;
        *units++ = static_cast<unsigned short>(0xD800 | offset >> 10);
        codePoint = 0xDC00 | (offset & 0x3FF);
    }
    *units++ = static_cast<unsigned short>(codePoint);
    return units;
}

}  // namespace Text

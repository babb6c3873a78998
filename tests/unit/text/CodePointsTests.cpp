#include <Text/CodePoints.h>

#include <gtest/gtest.h>

#include <random>

#include "ModelCodec.h"

namespace {

using Text::AppendToUtf8;
using Text::PutUtf16;
using Text::TakeFromUtf16;
using Text::TakeFromUtf8;

using Units = std::vector<unsigned short>;

constexpr char32_t LastCodePoint = 0x10FFFF;

bool IsSurrogate(char32_t codePoint) {
    return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}

TEST(CodePoints, EachHasItsSequenceInBothForms) {
    for (char32_t codePoint = 0; codePoint <= LastCodePoint; ++codePoint) {
        if (IsSurrogate(codePoint)) continue;
        std::string bytes;
        unsigned short units[2] = {};
        AppendToUtf8(bytes, codePoint);
        const unsigned short* const end = PutUtf16(units, codePoint);
        ASSERT_EQ(bytes, Model::Utf8Of(codePoint)) << std::hex << std::uint32_t{codePoint};
        ASSERT_EQ(Units(static_cast<const unsigned short*>(units), end), Model::Utf16Of(codePoint));

        std::string_view text = bytes;
        std::span<const unsigned short> wide(units, end);
        ASSERT_EQ(TakeFromUtf8(text), codePoint);
        ASSERT_EQ(TakeFromUtf16(wide), codePoint);
        ASSERT_TRUE(text.empty() && wide.empty());
    }
}

TEST(CodePoints, AreAppendedAfterWhatIsThere) {
    std::string bytes = "a";
    AppendToUtf8(bytes, 0x20AC);
    AppendToUtf8(bytes, 0x1F600);
    EXPECT_EQ(bytes, "a\xE2\x82\xAC\xF0\x9F\x98\x80");
}

// Eight bytes that begin, continue or break sequences, more often than chance would have it.
void MakeHostile(char (&bytes)[8], std::mt19937_64& random) {
    static constexpr unsigned char Frequent[] = {0x00, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF,
                                                 0xC1, 0xC2, 0xE0, 0xE2, 0xED, 0xF0, 0xF4, 0xF5};
    std::uint64_t any = random();
    const std::uint64_t frequent = random();
    for (int index = 0; index < 8; ++index, any >>= 8) {
        const bool chosen = frequent >> index & 1;
        bytes[index] = static_cast<char>(chosen ? Frequent[any & 0xF] : any & 0xFF);
    }
}

TEST(CodePoints, FourMillionRandomTextsReadAsTheModelReadsThem) {
    std::mt19937_64 random(20261121);
    char bytes[8];
    for (int round = 0; round < 4'000'000; ++round) {
        MakeHostile(bytes, random);
        std::string_view text(bytes, 1 + static_cast<std::size_t>(round) % sizeof bytes);
        for (std::string_view model = text; !model.empty();) {
            const char32_t expected = Model::TakeFromUtf8(model);
            ASSERT_EQ(TakeFromUtf8(text), expected) << round;
            ASSERT_EQ(text.size(), model.size()) << round;
        }
    }
}

// Surrogates of both halves, the units beside them, and any other.
void MakeHostile(unsigned short (&units)[4], std::mt19937_64& random) {
    static constexpr unsigned short Frequent[] = {0xD7FF, 0xD800, 0xD83D, 0xDBFF,
                                                  0xDC00, 0xDE00, 0xDFFF, 0xE000};
    std::uint64_t any = random();
    const std::uint64_t frequent = random();
    for (int index = 0; index < 4; ++index, any >>= 16) {
        const bool chosen = frequent >> index & 1;
        units[index] = static_cast<unsigned short>(chosen ? Frequent[any & 7] : any & 0xFFFF);
    }
}

TEST(CodePoints, AMillionRandomWideTextsReadAsTheModelReadsThem) {
    std::mt19937_64 random(20261122);
    unsigned short units[4];
    for (int round = 0; round < 1'000'000; ++round) {
        MakeHostile(units, random);
        std::span<const unsigned short> text(units, 1 + static_cast<std::size_t>(round) % 4);
        for (std::span<const unsigned short> model = text; !model.empty();) {
            const char32_t expected = Model::TakeFromUtf16(model);
            ASSERT_EQ(TakeFromUtf16(text), expected) << round;
            ASSERT_EQ(text.size(), model.size()) << round;
        }
    }
}

}  // namespace

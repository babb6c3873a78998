#include <Text/Ascii.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using Text::IsAscii;

bool IsAsciiWide(const std::vector<unsigned short>& units) {
    return IsAscii(std::span<const unsigned short>(units));
}

TEST(Ascii, TextsOfNothingAreAscii) {
    EXPECT_TRUE(IsAscii(""));
    EXPECT_TRUE(IsAscii(std::string_view()));
    EXPECT_TRUE(IsAsciiWide({}));
}

TEST(Ascii, EndsBeforeHexadecimalEighty) {
    for (int unit = 0; unit < 256; ++unit) {
        EXPECT_EQ(IsAscii(std::string(1, static_cast<char>(unit))), unit < 0x80) << unit;
    }
    for (int unit = 0; unit <= 0xFFFF; ++unit) {
        EXPECT_EQ(IsAsciiWide({static_cast<unsigned short>(unit)}), unit < 0x80) << unit;
    }
}

TEST(Ascii, OneOtherUnitIsFoundWhereverItStands) {
    for (std::size_t length = 1; length < 70; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            std::string text(length, 'x');
            std::vector<unsigned short> units(length, 'x');
            EXPECT_TRUE(IsAscii(text) && IsAsciiWide(units));
            text[place] = '\x80';
            units[place] = 0x100;
            EXPECT_FALSE(IsAscii(text)) << place << " of " << length;
            EXPECT_FALSE(IsAsciiWide(units)) << place << " of " << length;
        }
    }
}

TEST(AsciiPrintable, EndsAtTheControlCharacters) {
    for (int unit = 0; unit <= 0xFFFF; ++unit) {
        const unsigned short text[] = {'a', static_cast<unsigned short>(unit)};
        EXPECT_EQ(Text::IsPrintableAscii(text), unit >= 0x20 && unit <= 0x7E) << unit;
    }
    EXPECT_TRUE(Text::IsPrintableAscii({}));
}

// Returns what is written of the text; there is room for all of it.
std::vector<unsigned short> Put(std::string_view text) {
    std::vector<unsigned short> units(text.size());
    units.resize(Text::PutAscii(units.data(), text));
    return units;
}

TEST(AsciiPut, WritesTheWholeTextWhateverItsLength) {
    std::string text;
    for (int character = 0; character < 0x80; ++character) {
        EXPECT_EQ(Put(text), std::vector<unsigned short>(text.begin(), text.end()));
        text += static_cast<char>(character);
    }
}

TEST(AsciiPut, EndsBeforeTheFirstOtherCharacterWhereverItStands) {
    for (std::size_t length = 1; length < 30; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            std::string text(length, 'x');
            text[place] = '\x80';
            text.back() = place % 2 == 0 ? text.back() : '\xFF';
            EXPECT_EQ(Put(text), std::vector<unsigned short>(place, 'x'))
                << place << " of " << length;
        }
    }
}

}  // namespace

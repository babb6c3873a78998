#include <Text/Ascii.h>
#include <gtest/gtest.h>

#include <string>
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

}  // namespace

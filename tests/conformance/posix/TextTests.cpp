// The system's code page, which is UTF-8 here, and its name.
#include <Platform/System.h>

#include <string>

#include "conformance/Scene.h"

namespace Conformance {
namespace {

std::u16string Text(const System::WideUnits& units) {
    return {units.begin(), units.end()};
}

std::u16string Widen(const std::string& text) {
    return Text(System::WideFromCodePage(text.data(), text.size()));
}

std::string Narrow(const std::u16string& text) {
    const System::WideUnits units(text.begin(), text.end());
    return System::CodePageFromWide(units.data(), units.size());
}

TEST(TextCodePage, GoesToUtf16AndBack) {
    const std::string narrow = std::string("a\0b", 3) + "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    const std::u16string wide = std::u16string(u"a\0b", 3) + u"\u00E9\u20AC\U0001F600";
    EXPECT_EQ(Widen(narrow), wide);
    EXPECT_EQ(Narrow(wide), narrow);
    EXPECT_EQ(Widen(""), u"");
    EXPECT_EQ(Narrow(u""), "");
}

TEST(TextCodePage, TheBordersOfEachLengthAreKept) {
    for (const char32_t character : {0x7FU, 0x80U, 0x7FFU, 0x800U, 0xD7FFU, 0xE000U, 0xFFFFU,
                                     0x10000U, 0x3FFFFU, 0x40000U, 0xFFFFFU, 0x10FFFFU}) {
        std::u16string wide;
        if (character < 0x10000) {
            wide.push_back(static_cast<char16_t>(character));
        } else {
            wide.push_back(static_cast<char16_t>(0xD800U + ((character - 0x10000U) >> 10U)));
            wide.push_back(static_cast<char16_t>(0xDC00U + ((character - 0x10000U) & 0x3FFU)));
        }
        EXPECT_EQ(Widen(Narrow(wide)), wide) << static_cast<unsigned int>(character);
    }
}

struct BrokenRow {
    const char* narrow;
    const char16_t* wide;

    friend void PrintTo(const BrokenRow& row, std::ostream* stream) {
        for (const char* next = row.narrow; *next != '\0'; ++next) {
            *stream << std::hex << static_cast<int>(static_cast<unsigned char>(*next)) << ' ';
        }
    }
};

class TextThatIsBroken : public testing::TestWithParam<BrokenRow> {};

TEST_P(TextThatIsBroken, BecomesReplacementCharacters) {
    EXPECT_EQ(Widen(GetParam().narrow), GetParam().wide);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TextThatIsBroken,
    testing::Values(BrokenRow{"\x80", u"\uFFFD"}, BrokenRow{"a\xBFz", u"a\uFFFDz"},
                    BrokenRow{"\xC3", u"\uFFFD"}, BrokenRow{"\xC3(", u"\uFFFD("},
                    BrokenRow{"\xC0\x80", u"\uFFFD\uFFFD"}, BrokenRow{"\xE2\x82", u"\uFFFD"},
                    BrokenRow{"\xE2\x82z", u"\uFFFDz"}, BrokenRow{"\xE2\x82\xC0", u"\uFFFD\uFFFD"},
                    BrokenRow{"\xF0\x9F\x98\xC0", u"\uFFFD\uFFFD"},
                    BrokenRow{"\xE0\x80\x80", u"\uFFFD\uFFFD\uFFFD"},
                    BrokenRow{"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
                    BrokenRow{"\xF0\x9F\x98", u"\uFFFD"},
                    BrokenRow{"\xF0\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
                    BrokenRow{"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
                    BrokenRow{"\xF5z", u"\uFFFDz"}, BrokenRow{"\xFF\xFE", u"\uFFFD\uFFFD"}));

TEST(TextCodePage, LoneSurrogatesBecomeReplacementCharacters) {
    const char16_t high = 0xD83D;
    const char16_t low = 0xDE00;
    EXPECT_EQ(Narrow({high}), "\xEF\xBF\xBD");
    EXPECT_EQ(Narrow({low}), "\xEF\xBF\xBD");
    EXPECT_EQ(Narrow({high, u'a'}),
              "\xEF\xBF\xBD"
              "a");
    EXPECT_EQ(Narrow({low, high}), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(Narrow({high, high, low}), "\xEF\xBF\xBD\xF0\x9F\x98\x80");
}

using TextOfTheComputersName = Started;

TEST_F(TextOfTheComputersName, IsTheOneThatNamesAreLookedUpFor) {
    char name[300] = {};
    ASSERT_TRUE(Succeeds(Winsock::gethostname(name, sizeof name)));
    EXPECT_EQ(Text(System::ComputerName()), Widen(name));
}

}  // namespace
}  // namespace Conformance

#include <Text/Utf8.h>

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace {

using Text::Utf16FromUtf8;
using Text::Utf8FromUtf16;

using Units = std::vector<unsigned short>;

std::u16string Widen(std::string_view text) {
    const Units units = Utf16FromUtf8(text);
    return {units.begin(), units.end()};
}

std::string Narrow(std::u16string_view text) {
    return Utf8FromUtf16(Units(text.begin(), text.end()));
}

using Pairs = std::vector<std::pair<std::string, std::u16string>>;

void ExpectWidened(const Pairs& pairs) {
    for (const auto& [narrow, wide] : pairs)
        EXPECT_EQ(Widen(narrow), wide) << testing::PrintToString(narrow);
}

TEST(Utf8, KnownTextsConvertBothWays) {
    const Pairs pairs = {
        {"", u""},
        {"\x7F", u"\u007F"},
        {"\xC2\x80", u"\u0080"},
        {"\xDF\xBF", u"\u07FF"},
        {"\xE0\xA0\x80", u"\u0800"},
        {"\xE2\x82\xAC", u"\u20AC"},
        {"\xED\x9F\xBF", u"\uD7FF"},
        {"\xEE\x80\x80", u"\uE000"},
        {"\xEF\xBF\xBF", u"\uFFFF"},
        {"\xF0\x90\x80\x80", u"\U00010000"},
        {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        {std::string("a\0\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z", 12),
         std::u16string(u"a\0\u00E9\u20AC\U0001F600z", 7)},
    };
    ExpectWidened(pairs);
    for (const auto& [narrow, wide] : pairs)
        EXPECT_EQ(Narrow(wide), narrow);
}

TEST(Utf8, OverlongFormsAreBrokenByteByByte) {
    ExpectWidened({
        {"\xC0\x80", u"\uFFFD\uFFFD"},
        {"\xC1\xBF", u"\uFFFD\uFFFD"},
        {"\xE0\x80\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD"},
        {"\xF0\x80\x80\xAF", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF0\x8F\xBF\xBF", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
    });
}

TEST(Utf8, SurrogatesAndWhatIsAboveUnicodeAreBrokenByteByByte) {
    ExpectWidened({
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"\xED\xBF\xBF", u"\uFFFD\uFFFD\uFFFD"},
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF5\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF5z", u"\uFFFDz"},
    });
}

TEST(Utf8, ByteThatBeginsNothingIsOneReplacement) {
    ExpectWidened({
        {"\x80", u"\uFFFD"},
        {"a\xBFz", u"a\uFFFDz"},
        {"\xBF\xBF", u"\uFFFD\uFFFD"},
        {"\xFE\xFF", u"\uFFFD\uFFFD"},
    });
}

TEST(Utf8, SequenceThatEndsTooEarlyIsOneReplacement) {
    ExpectWidened({
        {"\xC3", u"\uFFFD"},
        {"\xE2\x82", u"\uFFFD"},
        {"\xF0\x9F", u"\uFFFD"},
        {"\xF0\x9F\x98", u"\uFFFD"},
        {"\xE2\x82z", u"\uFFFDz"},
        {"\xC3(", u"\uFFFD("},
    });
}

// A lead byte never belongs to the sequence that it breaks, not even where it begins none itself.
TEST(Utf8, WhatBreaksASequenceIsReadForItself) {
    ExpectWidened({
        {"\xF0\xC0", u"\uFFFD\uFFFD"},
        {"\xE2\x82\xC0", u"\uFFFD\uFFFD"},
        {"\xF0\x9F\x98\xC0", u"\uFFFD\uFFFD"},
        {"\xF0\x9F\x98\xC3\xA9", u"\uFFFD\u00E9"},
        {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF"
         "A",
         u"\uFFFD\uFFFD\uFFFD\uFFFDA"},
        {"\xF4\x91\x92\x93\xFF"
         "A\x80\xBF"
         "B",
         u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA\uFFFD\uFFFDB"},
    });
}

TEST(Utf8, HalfAPairOfSurrogatesIsOneReplacement) {
    const std::pair<std::u16string, std::string> pairs[] = {
        {{0xD800}, "\xEF\xBF\xBD"},
        {{0xDFFF}, "\xEF\xBF\xBD"},
        {{0xDBFF, u'a'},
         "\xEF\xBF\xBD"
         "a"},
        {{0xDE00, 0xD83D}, "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {{0xD83D, 0xD83D, 0xDE00}, "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
    };
    for (const auto& [wide, narrow] : pairs)
        EXPECT_EQ(Narrow(wide), narrow);
}

// Memory that is not the text's own is beyond what the sanitizers let anybody read.
TEST(Utf8, NothingIsReadAfterATextThatIsCutShort) {
    const auto bytes = std::make_unique<char[]>(2);
    bytes[0] = '\xE2', bytes[1] = '\x82';
    EXPECT_EQ(Widen({bytes.get(), 2}), u"\uFFFD");
    const auto unit = std::make_unique<unsigned short>(static_cast<unsigned short>(0xD83D));
    EXPECT_EQ(Utf8FromUtf16({unit.get(), 1}), "\xEF\xBF\xBD");
}

TEST(Utf8, UnitsAreWrittenWithoutATerminator) {
    unsigned short units[4] = {1, 2, 3, 4};
    EXPECT_EQ(Text::PutUtf16(units, "a\xE2\x82\xAC"), units + 2);
    EXPECT_EQ(Units(units, units + 4), (Units{'a', 0x20AC, 3, 4}));
    EXPECT_EQ(Text::PutUtf16(units, ""), static_cast<unsigned short*>(units));
}

}  // namespace

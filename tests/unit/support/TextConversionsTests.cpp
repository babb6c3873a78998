#include <VelBase/LibraryConversions.h>
#include <VelBase/TextConversions.h>
#include <VelBase/WideLiteral.h>

#include <limits>
#include <memory>
#include <random>
#include <string>
#include <type_traits>

#include "scripted/ScriptedPlatform.h"
#include "support/OutOfMemory.h"

namespace {

using namespace Scripted;
using VelBase::operator""_wide;
using VelBase::MultiByteToWideChar;
using VelBase::ReturnString;
using VelBase::ReturnWString;
using VelBase::ToDecimalWString;
using VelBase::UTF8ToWideChar;
using VelBase::WideCharToMultiByte;
using VelBase::WideCharToUTF8;
using VelBase::WideCharToUTF8UsingLength;

static_assert(std::is_same_v<decltype(&UTF8ToWideChar), ReturnWString (*)(const char*, bool)>);
static_assert(
    std::is_same_v<decltype(&WideCharToUTF8), ReturnString (*)(const unsigned short*, bool)>);
static_assert(std::is_same_v<decltype(&WideCharToUTF8UsingLength),
                             ReturnString (*)(const unsigned short*, unsigned int, bool)>);
static_assert(std::is_same_v<decltype(&MultiByteToWideChar), ReturnWString (*)(const char*, bool)>);
static_assert(
    std::is_same_v<decltype(&WideCharToMultiByte), ReturnString (*)(const unsigned short*, bool)>);
static_assert(std::is_same_v<decltype(&ToDecimalWString), ReturnWString (*)(int)>);

std::u16string ToWide(const std::string& text) {
    return Text(UTF8ToWideChar(text.c_str(), false).c_str());
}

std::string ToUtf8(std::u16string_view text) {
    return WideCharToUTF8(Wide(text).data(), false).c_str();
}

std::u16string Units(char32_t codePoint) {
    if (codePoint < 0x10000) return {static_cast<char16_t>(codePoint)};
    const char32_t offset = codePoint - 0x10000;
    return {static_cast<char16_t>(0xD800 + offset / 0x400),
            static_cast<char16_t>(0xDC00 + offset % 0x400)};
}

bool IsSurrogate(char32_t codePoint) {
    return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}

class TextConversions : public PlatformTest {};

TEST_F(TextConversions, KnownTextsConvertBothWays) {
    const std::pair<std::string, std::u16string> pairs[] = {
        {"", u""},
        {"A", u"A"},
        {"\x7F", u"\u007F"},
        {"\xC2\x80", u"\u0080"},
        {"\xC3\xA9", u"\u00E9"},
        {"\xDF\xBF", u"\u07FF"},
        {"\xE0\xA0\x80", u"\u0800"},
        {"\xE2\x82\xAC", u"\u20AC"},
        {"\xED\x9F\xBF", u"\uD7FF"},
        {"\xEE\x80\x80", u"\uE000"},
        {"\xEF\xBF\xBD", u"\uFFFD"},
        {"\xEF\xBF\xBF", u"\uFFFF"},
        {"\xF0\x90\x80\x80", u"\U00010000"},
        {"\xF0\x9F\x98\x80", u"\U0001F600"},
        {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        {"a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z", u"a\u00E9\u20AC\U0001F600z"},
    };
    for (const auto& [narrow, wide] : pairs) {
        EXPECT_EQ(ToWide(narrow), wide);
        EXPECT_EQ(ToUtf8(wide), narrow);
    }
}

TEST_F(TextConversions, EveryCodePointSurvivesTheRoundTrip) {
    for (char32_t codePoint = 1; codePoint <= 0x10FFFF; ++codePoint) {
        if (IsSurrogate(codePoint)) continue;
        const std::u16string wide = Units(codePoint);
        ASSERT_EQ(ToWide(ToUtf8(wide)), wide) << std::hex << static_cast<unsigned>(codePoint);
    }
}

TEST_F(TextConversions, FlagHasNoEffect) {
    const auto wide = Wide(u"\u20AC");
    EXPECT_EQ(Text(UTF8ToWideChar("\xE2\x82\xAC\xFF", true).c_str()), u"\u20AC\uFFFD");
    EXPECT_STREQ(WideCharToUTF8(wide.data(), true).c_str(), "\xE2\x82\xAC");
    EXPECT_STREQ(WideCharToUTF8UsingLength(wide.data(), 1, true).c_str(), "\xE2\x82\xAC");
    EXPECT_EQ(Text(MultiByteToWideChar("a", true).c_str()), u"a");
    EXPECT_STREQ(WideCharToMultiByte("a"_wide, true).c_str(), "a");
}

TEST_F(TextConversions, NullIsTheEmptyText) {
    EXPECT_EQ(Text(UTF8ToWideChar(nullptr, false).c_str()), u"");
    EXPECT_STREQ(WideCharToUTF8(nullptr, false).c_str(), "");
    EXPECT_STREQ(WideCharToUTF8UsingLength(nullptr, 0, false).c_str(), "");
    EXPECT_EQ(Text(MultiByteToWideChar(nullptr, false).c_str()), u"");
    EXPECT_STREQ(WideCharToMultiByte(nullptr, false).c_str(), "");
}

TEST_F(TextConversions, EachMaximalBrokenPartOfUtf8IsOneReplacement) {
    const std::pair<std::string, std::u16string> pairs[] = {
        // Bytes that begin nothing.
        {"\x80", u"\uFFFD"},
        {"\xBF\xBF", u"\uFFFD\uFFFD"},
        {"\xFE\xFF", u"\uFFFD\uFFFD"},
        {"\xF5\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        // Overlong forms.
        {"\xC0\x80", u"\uFFFD\uFFFD"},
        {"\xC1\xBF", u"\uFFFD\uFFFD"},
        {"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"},
        {"\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD"},
        {"\xF0\x80\x80\xAF", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF0\x8F\xBF\xBF", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        // Surrogates.
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"\xED\xBF\xBF", u"\uFFFD\uFFFD\uFFFD"},
        // Above the last code point.
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        // Ends too early.
        {"\xC3", u"\uFFFD"},
        {"\xE2\x82", u"\uFFFD"},
        {"\xF0\x9F\x98", u"\uFFFD"},
        {"\xF0\x9F", u"\uFFFD"},
        // What follows a broken part is kept.
        {"\xC3"
         "A",
         u"\uFFFDA"},
        {"\xE2\x82"
         "A",
         u"\uFFFDA"},
        {"\xF0\x9F\x98\xC3\xA9", u"\uFFFD\u00E9"},
        {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF"
         "A",
         u"\uFFFD\uFFFD\uFFFD\uFFFDA"},
        {"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82"
         "A",
         u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA"},
        {"\xF4\x91\x92\x93\xFF"
         "A\x80\xBF"
         "B",
         u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA\uFFFD\uFFFDB"},
    };
    for (const auto& [narrow, wide] : pairs)
        EXPECT_EQ(ToWide(narrow), wide);
}

TEST_F(TextConversions, BrokenSequenceBeforeTheTerminatorDoesNotReachBehindIt) {
    const char text[] = {'\xE2', '\x82', '\0', '\xAC', '\0'};
    EXPECT_EQ(Text(UTF8ToWideChar(text, false).c_str()), u"\uFFFD");
}

TEST_F(TextConversions, HalfSurrogatePairsAreReplaced) {
    const std::pair<std::u16string, std::string> pairs[] = {
        {{0xD800}, "\xEF\xBF\xBD"},
        {{0xDBFF, u'A'},
         "\xEF\xBF\xBD"
         "A"},
        {{0xDC00}, "\xEF\xBF\xBD"},
        {{0xDFFF, u'A'},
         "\xEF\xBF\xBD"
         "A"},
        {{0xD83D, 0xD83D, 0xDE00}, "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
        {{0xDE00, 0xD83D}, "\xEF\xBF\xBD\xEF\xBF\xBD"},
    };
    for (const auto& [wide, narrow] : pairs)
        EXPECT_EQ(ToUtf8(wide), narrow);
}

TEST_F(TextConversions, HighSurrogateBeforeTheTerminatorDoesNotReachBehindIt) {
    const unsigned short text[] = {0xD83D, 0, 0xDE00, 0};
    EXPECT_STREQ(WideCharToUTF8(text, false).c_str(), "\xEF\xBF\xBD");
}

TEST_F(TextConversions, ConversionByLengthTakesExactlyThatMany) {
    const unsigned short text[] = {0x274D, 'b', 0xD83D, 0xDE00};
    EXPECT_STREQ(WideCharToUTF8UsingLength(text, 0, false).c_str(), "");
    EXPECT_STREQ(WideCharToUTF8UsingLength(text, 1, false).c_str(), "\xE2\x9D\x8D");
    EXPECT_STREQ(WideCharToUTF8UsingLength(text, 2, false).c_str(),
                 "\xE2\x9D\x8D"
                 "b");
    EXPECT_STREQ(WideCharToUTF8UsingLength(text, 3, false).c_str(),
                 "\xE2\x9D\x8D"
                 "b\xEF\xBF\xBD");
    EXPECT_STREQ(WideCharToUTF8UsingLength(text, 4, false).c_str(),
                 "\xE2\x9D\x8D"
                 "b\xF0\x9F\x98\x80");
}

TEST_F(TextConversions, ConversionByLengthEndsItsTextAtAZero) {
    const unsigned short text[] = {'a', 0, 'b'};
    EXPECT_STREQ(WideCharToUTF8UsingLength(text, 3, false).c_str(), "a");
}

TEST_F(TextConversions, ConversionByLengthReadsNothingBehind) {
    const auto exact = std::make_unique<unsigned short[]>(1);
    exact[0] = 0xD83D;
    EXPECT_STREQ(WideCharToUTF8UsingLength(exact.get(), 1, false).c_str(), "\xEF\xBF\xBD");
}

// Bytes that begin, continue or break sequences, more often than chance would have it.
std::string HostileBytes(std::mt19937& random) {
    static constexpr unsigned char Frequent[] = {0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC1,
                                                 0xC2, 0xDF, 0xE0, 0xED, 0xEF, 0xF0, 0xF4, 0xF5};
    std::string bytes(random() % 40, '\0');
    for (char& byte : bytes) {
        const bool frequent = random() % 2 == 0;
        byte = static_cast<char>(frequent ? Frequent[random() % 16] : 1 + random() % 255);
    }
    return bytes;
}

TEST_F(TextConversions, RandomBytesAreValidOrShowReplacements) {
    std::mt19937 random(20261121);
    for (int round = 0; round < 100'000; ++round) {
        const std::string bytes = HostileBytes(random);
        const std::u16string wide = ToWide(bytes);
        ASSERT_LE(wide.size(), bytes.size());
        const bool isWhole = ToUtf8(wide) == bytes;
        ASSERT_TRUE(isWhole || wide.find(u'\uFFFD') != wide.npos);
        // What came out is valid text, so nothing changes any more.
        ASSERT_EQ(ToWide(ToUtf8(wide)), wide);
    }
}

TEST_F(TextConversions, RandomUnitsAreValidOrShowReplacements) {
    std::mt19937 random(20261122);
    for (int round = 0; round < 100'000; ++round) {
        std::u16string units(random() % 20, u'\0');
        for (char16_t& unit : units) {
            unit = static_cast<char16_t>(random() % 2 == 0 ? 0xD700 + random() % 0xA00
                                                           : 1 + random() % 0xFFFF);
        }
        const std::u16string back = ToWide(ToUtf8(units));
        ASSERT_TRUE(back == units || back.find(u'\uFFFD') != back.npos);
        ASSERT_LE(back.size(), units.size());
        ASSERT_EQ(ToWide(ToUtf8(back)), back);
    }
}

TEST_F(TextConversions, RandomValidTextSurvivesTheRoundTrip) {
    std::mt19937 random(20261123);
    for (int round = 0; round < 20'000; ++round) {
        std::u16string text;
        for (auto length = random() % 30; length > 0; --length) {
            const auto codePoint = static_cast<char32_t>(1 + random() % 0x10FFFF);
            if (!IsSurrogate(codePoint)) text += Units(codePoint);
        }
        ASSERT_EQ(ToWide(ToUtf8(text)), text);
    }
}

TEST_F(TextConversions, LongTextsConvertWhole) {
    std::string narrow;
    std::u16string wide;
    for (int part = 0; part < 100'000; ++part) {
        narrow += "x\xE2\x82\xAC";
        wide += u"x\u20AC";
    }
    EXPECT_EQ(ToWide(narrow), wide);
    EXPECT_EQ(ToUtf8(wide), narrow);
}

TEST_F(TextConversions, CodePageTextsAreConvertedByTheSystem) {
    EXPECT_EQ(Text(MultiByteToWideChar("h\xF6st", false).c_str()), u"h\u00F6st");
    EXPECT_STREQ(WideCharToMultiByte(Wide(u"h\u00F6st").data(), false).c_str(), "h\xF6st");
    EXPECT_EQ(Transcript(), (std::vector<std::string>{"WideFromCodePage(\"h\\xF6st\", 4)",
                                                      "CodePageFromWide(\"h\\u00F6st\", 4)"}));
}

TEST_F(TextConversions, WhateverTheSystemAnswersIsTheResult) {
    On::WideFromCodePage().Returns(u"\u20AC\U0001F600");
    On::CodePageFromWide().Returns("?\xA4");
    EXPECT_EQ(Text(MultiByteToWideChar("\x80", false).c_str()), u"\u20AC\U0001F600");
    EXPECT_STREQ(WideCharToMultiByte("text"_wide, false).c_str(), "?\xA4");
}

TEST_F(TextConversions, AsciiIsTheSameInEveryCodePage) {
    EXPECT_EQ(Text(MultiByteToWideChar("text\x7F", false).c_str()), u"text\x7F");
    EXPECT_EQ(CountOf("WideFromCodePage"), 0);
}

TEST_F(TextConversions, NumbersAreWrittenInDecimal) {
    const std::pair<int, std::u16string> pairs[] = {
        {0, u"0"},
        {80, u"80"},
        {65535, u"65535"},
        {-1, u"-1"},
        {std::numeric_limits<int>::max(), u"2147483647"},
        {std::numeric_limits<int>::min(), u"-2147483648"},
    };
    for (const auto& [number, text] : pairs) {
        EXPECT_EQ(Text(ToDecimalWString(number).c_str()), text);
    }
}

TEST_F(TextConversions, EveryFailingAllocationIsReported) {
    using Support::ExpectBadAllocFromEveryAllocation;
    const auto wide = Wide(u"a text that is longer than any short text: \u20AC\U0001F600");
    const std::string narrow(100, '\xFF');
    ExpectBadAllocFromEveryAllocation(2, [&] { UTF8ToWideChar(narrow.c_str(), false); });
    ExpectBadAllocFromEveryAllocation(2, [&] { WideCharToUTF8(wide.data(), false); });
    ExpectBadAllocFromEveryAllocation(2,
                                      [&] { WideCharToUTF8UsingLength(wide.data(), 40, false); });
    ExpectBadAllocFromEveryAllocation(2, [] { ToDecimalWString(10061); });
}

}  // namespace

// The library's strings and the standard library's.
#include <VelCompanion/Strings.h>
#include <gtest/gtest.h>
#include <support/Text.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace Companion {
namespace {

using namespace std::string_view_literals;
using Support::Text;
using Support::Wide;
using VelCompanion::ToReturnString;
using VelCompanion::ToReturnWString;
using VelCompanion::ToString;
using VelCompanion::ToWString;

// A letter beyond ASCII, and one beyond 16 bits.
constexpr const char* Utf8 = "K\xC3\xB6ln \xF0\x9F\x90\x8E";
const std::wstring& WideText() {
    static const std::wstring text = L"K\u00f6ln \U0001F40E";
    return text;
}

TEST(Strings, BecomeTheStandardLibrarys) {
    const VelBase::ReturnString narrow(Utf8);
    const VelBase::ReturnWString wide(Wide(u"K\u00f6ln \U0001F40E").data());
    EXPECT_EQ(ToString(narrow), Utf8);
    EXPECT_EQ(ToString(wide), Utf8);
    EXPECT_EQ(ToString(wide.c_str()), Utf8);
    EXPECT_EQ(ToWString(wide), WideText());
    EXPECT_EQ(ToWString(narrow), WideText());
}

TEST(Strings, ComeFromTheStandardLibrarys) {
    EXPECT_STREQ(ToReturnString(std::string(Utf8)).c_str(), Utf8);
    EXPECT_EQ(Text(ToReturnWString(std::string_view(Utf8)).c_str()), u"K\u00f6ln \U0001F40E");
    EXPECT_EQ(Text(ToReturnWString(WideText()).c_str()), u"K\u00f6ln \U0001F40E");
}

TEST(Strings, MayBeEmptyOrNull) {
    const unsigned short* const none = nullptr;
    EXPECT_EQ(ToString(none), "");
    EXPECT_EQ(ToWString(none), L"");
    EXPECT_EQ(ToString(VelBase::ReturnString()), "");
    EXPECT_EQ(ToWString(VelBase::ReturnWString()), L"");
    EXPECT_STREQ(ToReturnString("").c_str(), "");
    EXPECT_EQ(Text(ToReturnWString(""sv).c_str()), u"");
    EXPECT_EQ(Text(ToReturnWString(L""sv).c_str()), u"");
}

TEST(Strings, WithAZeroAreRefused) {
    try {
        (void)ToReturnString("ab\0c"sv);
        FAIL() << "the rest would be lost";
    } catch (const std::invalid_argument& failure) {
        EXPECT_STREQ(failure.what(), "VelCompanion: the text contains a zero, after 2 characters");
    }
    EXPECT_THROW((void)ToReturnWString("\0"sv), std::invalid_argument);
    EXPECT_THROW((void)ToReturnWString(L"a\0"sv), std::invalid_argument);
}

// Half a pair in each position. Where wide characters have 16 bits, halves stay as they are.
TEST(Strings, WithInvalidPartsKeepTheRest) {
    for (const std::u16string& text :
         {std::u16string{u'a', 0xD83D, u'b'}, std::u16string{u'a', 0xDC0E, u'b'}}) {
        EXPECT_EQ(ToString(Wide(text).data()),
                  "a\xEF\xBF\xBD"
                  "b");
        const std::wstring wide = ToWString(Wide(text).data());
        ASSERT_EQ(wide.size(), 3U);
        EXPECT_TRUE(sizeof(wchar_t) == 2 || wide[1] == 0xFFFD);
        EXPECT_EQ(wide[2], L'b');
    }
    EXPECT_EQ(ToWString(Wide(std::u16string{0xD83D}).data()).size(), 1U);
    EXPECT_EQ(Text(ToReturnWString("a\xFFz"sv).c_str()), u"a\uFFFDz");
    const std::wstring half{L'a', static_cast<wchar_t>(0xD83D), L'z'};
    EXPECT_EQ(Text(ToReturnWString(half).c_str()).size(), 3U);
}

}  // namespace
}  // namespace Companion

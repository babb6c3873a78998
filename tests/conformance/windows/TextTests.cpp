// The system's code page, and its name.
#include <windows.h>

#include <Platform/System.h>
#include <gtest/gtest.h>

#include <string>

namespace Conformance {
namespace {

std::wstring Text(const System::WideUnits& units) {
    return {units.begin(), units.end()};
}

std::wstring Widen(const std::string& text) {
    return Text(System::WideFromCodePage(text.data(), text.size()));
}

std::string Narrow(const std::wstring& text) {
    const System::WideUnits units(text.begin(), text.end());
    return System::CodePageFromWide(units.data(), units.size());
}

TEST(TextCodePage, GoesToUtf16AndBack) {
    const std::string narrow("a\0b", 3);
    const std::wstring wide(L"a\0b", 3);
    EXPECT_EQ(Widen(narrow), wide);
    EXPECT_EQ(Narrow(wide), narrow);
    EXPECT_EQ(Widen(""), L"");
    EXPECT_EQ(Narrow(std::wstring()), "");
}

// Above ASCII the system's own tables tell what each of its code page's bytes stands for.
TEST(TextCodePage, IsTheSystems) {
    for (int value = 0x80; value <= 0xFF; ++value) {
        const auto byte = static_cast<char>(value);
        wchar_t expected[2] = {};
        const int count = ::MultiByteToWideChar(::GetACP(), 0, &byte, 1, expected, 2);
        ASSERT_EQ(count, 1) << value;
        EXPECT_EQ(Widen(std::string(1, byte)), std::wstring(expected, 1)) << value;
    }
}

TEST(TextCodePage, WhatItDoesNotHaveIsReplaced) {
    if (::GetACP() == CP_UTF8) GTEST_SKIP() << "the code page has everything";
    EXPECT_EQ(Narrow(L"a\u4E2Db"), "a?b");
}

TEST(TextOfTheComputersName, IsTheSystems) {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD length = MAX_COMPUTERNAME_LENGTH + 1;
    ASSERT_NE(::GetComputerNameW(name, &length), 0);
    EXPECT_GT(length, 0U);
    EXPECT_EQ(Text(System::ComputerName()), std::wstring(name, length));
}

TEST(TextOfErrorDescriptions, EndWithoutALineBreak) {
    for (const unsigned int error : {2U, 5U, 6U, 10038U, 10061U, 11001U}) {
        const std::wstring text = Text(System::ErrorDescription(error));
        EXPECT_EQ(text.find_first_of(L"\r\n"), std::wstring::npos) << error;
        EXPECT_NE(text.back(), L' ') << error;
    }
}

}  // namespace
}  // namespace Conformance

#include <Socket/FailureText.h>
#include <Socket/LogFormat.h>
#include <gtest/gtest.h>

#include <string>

namespace FoundationTests {
namespace {

using VelNet::LogFormat;
using VelNet::operator""_format;

TEST(LogFormat, HoldsTheFormatAndTheSameInDoubleQuotes) {
    constexpr LogFormat format = "Sent %1 bytes, data: %2"_format;
    EXPECT_STREQ(format.text, "Sent %1 bytes, data: %2");
    EXPECT_STREQ(format.quoted, "\"Sent %1 bytes, data: %2\"");
}

TEST(LogFormat, EmptyFormatIsTwoQuotes) {
    constexpr LogFormat format = ""_format;
    EXPECT_STREQ(format.text, "");
    EXPECT_STREQ(format.quoted, "\"\"");
}

TEST(LogFormat, QuotesAndBackslashesOfTheFormatStandAsTheyAre) {
    constexpr LogFormat format = "a \"quoted\" \\ word\n"_format;
    EXPECT_STREQ(format.text, "a \"quoted\" \\ word\n");
    EXPECT_STREQ(format.quoted, "\"a \"quoted\" \\ word\n\"");
}

TEST(LogFormat, BytesAboveAsciiAreKept) {
    constexpr LogFormat format = "gr\xC3\xBC\xC3\x9F %1"_format;
    EXPECT_STREQ(format.text, "gr\xC3\xBC\xC3\x9F %1");
    EXPECT_STREQ(format.quoted, "\"gr\xC3\xBC\xC3\x9F %1\"");
}

TEST(LogFormat, LongFormatIsKeptWhole) {
    constexpr LogFormat format =
        "0123456789012345678901234567890123456789012345678901234567890123456789"
        "0123456789012345678901234567890123456789012345678901234567890123456789"_format;
    const std::string digits = "0123456789";
    std::string text;
    for (int time = 0; time < 14; ++time)
        text += digits;
    EXPECT_EQ(format.text, text);
    EXPECT_EQ(format.quoted, '"' + text + '"');
}

TEST(LogFormat, FailureStandsAloneInItsRecord) {
    EXPECT_STREQ(VelNet::FailureFormat.text, "%1");
    EXPECT_STREQ(VelNet::FailureFormat.quoted, "\"%1\"");
}

}  // namespace
}  // namespace FoundationTests

// Each format, byte by byte.
#include <VelLogging/Format.h>
#include <gtest/gtest.h>
#include <logging/SampleRecords.h>

#include <thread>

namespace VelLoggingTests {
namespace {

using VelLogging::Format;

std::string Line(Format format, const VelLog::LogRecord& record) {
    std::string line = "before|";
    VelLogging::AppendLine(line, format, record, {4711, 4712});
    return line;
}

TEST(FormatOfRecords, PlainIsTimeRouterCategoryAndText) {
    EXPECT_EQ(Line(Format::Plain, SampleRecord(u"Sent 5 bytes", 17)),
              "before|2026-11-22T13:01:02.123456Z Network/Packet Trace: Sent 5 bytes\n");
}

TEST(FormatOfRecords, TextHasProcessThreadAndConnection) {
    EXPECT_EQ(Line(Format::Text, SampleRecord(u"Sent 5 bytes", 17)),
              "before|2026-11-22T13:01:02.123456Z [4711:4712] #17 Network/Packet Trace: Sent 5 "
              "bytes\n");
    EXPECT_EQ(Line(Format::Text, SampleRecord(u"x", 0, "Error")),
              "before|2026-11-22T13:01:02.123456Z [4711:4712] Network/Error: x\n");
}

TEST(FormatOfRecords, LogfmtQuotesWhatHasBlanks) {
    EXPECT_EQ(Line(Format::Logfmt, SampleRecord(u"Sent 5 bytes", 17)),
              "before|time=2026-11-22T13:01:02.123456Z pid=4711 tid=4712 connection=17 "
              "router=Network category=\"Packet Trace\" text=\"Sent 5 bytes\"\n");
    EXPECT_EQ(Line(Format::Logfmt, SampleRecord(u"x", 0, "Error")),
              "before|time=2026-11-22T13:01:02.123456Z pid=4711 tid=4712 router=Network "
              "category=Error text=\"x\"\n");
}

TEST(FormatOfRecords, JsonHasNumbersAndStrings) {
    EXPECT_EQ(Line(Format::Json, SampleRecord(u"Sent 5 bytes", 17)),
              "before|{\"time\":\"2026-11-22T13:01:02.123456Z\",\"pid\":4711,\"tid\":4712,"
              "\"connection\":17,\"router\":\"Network\",\"category\":\"Packet Trace\","
              "\"text\":\"Sent 5 bytes\"}\n");
    EXPECT_EQ(Line(Format::Json, SampleRecord(u"", 0, "Error")),
              "before|{\"time\":\"2026-11-22T13:01:02.123456Z\",\"pid\":4711,\"tid\":4712,"
              "\"router\":\"Network\",\"category\":\"Error\",\"text\":\"\"}\n");
}

TEST(FormatOfRecords, TimesHaveAllDigits) {
    const auto timeOf = [](long long time) {
        return Line(Format::Plain, SampleRecord(u"", 0, "Error", time)).substr(7, 27);
    };
    EXPECT_EQ(timeOf(0), "1970-01-01T00:00:00.000000Z");
    EXPECT_EQ(timeOf(1), "1970-01-01T00:00:00.000001Z");
    EXPECT_EQ(timeOf(951'827'696'000'000), "2000-02-29T12:34:56.000000Z");
    EXPECT_EQ(timeOf(-1), "1969-12-31T23:59:59.999999Z");
}

// A quote, a backslash, controls of one and two bytes, half a pair, a character outside the plane.
constexpr char16_t Hostile[] = u"\"\\\n\r\t\x1B\x7F\x85\xD800\xE9\xD83D\xDE00";

TEST(FormatOfRecords, PlainLinesShowControls) {
    const std::string text =
        "\"\\\\u000A\\u000D\\u0009\\u001B\\u007F\\u0085\xEF\xBF\xBD\xC3\xA9\xF0\x9F\x98\x80";
    EXPECT_EQ(Line(Format::Plain, SampleRecord(Hostile)),
              "before|2026-11-22T13:01:02.123456Z Network/Packet Trace: " + text + "\n");
    EXPECT_EQ(
        Line(Format::Text, SampleRecord(Hostile, 1)),
        "before|2026-11-22T13:01:02.123456Z [4711:4712] #1 Network/Packet Trace: " + text + "\n");
}

TEST(FormatOfRecords, QuotedTextsAreEscaped) {
    const std::string text =
        "\"\\\"\\\\\\n\\r\\t\\u001b\\u007f\\u0085\xEF\xBF\xBD\xC3\xA9\xF0\x9F\x98\x80\"";
    EXPECT_EQ(Line(Format::Logfmt, SampleRecord(Hostile)),
              "before|time=2026-11-22T13:01:02.123456Z pid=4711 tid=4712 router=Network "
              "category=\"Packet Trace\" text=" +
                  text + "\n");
    EXPECT_EQ(Line(Format::Json, SampleRecord(Hostile)),
              "before|{\"time\":\"2026-11-22T13:01:02.123456Z\",\"pid\":4711,\"tid\":4712,"
              "\"router\":\"Network\",\"category\":\"Packet Trace\",\"text\":" +
                  text + "}\n");
}

TEST(FormatOfRecords, HostileNamesStayWithinTheirPlaces) {
    const unsigned short empty[] = {0};
    const VelLog::LogRecord record = {"a b", "c\"\nd", empty, 0};
    EXPECT_EQ(Line(Format::Logfmt, record),
              "before|time=1970-01-01T00:00:00.000000Z pid=4711 tid=4712 router=\"a b\" "
              "category=\"c\\\"\\nd\" text=\"\"\n");
    EXPECT_EQ(Line(Format::Plain, record),
              "before|1970-01-01T00:00:00.000000Z a b/c\"\\u000Ad: \n");
}

TEST(FormatOfRecords, VeryLongTextsStayWhole) {
    const std::u16string text(1'000'000, u'\xE9');
    const std::string line = Line(Format::Json, SampleRecord(text));
    EXPECT_EQ(line.size(), 7U + 116U + 2'000'000);
    EXPECT_EQ(line.substr(line.size() - 5), "\xC3\xA9\"}\n");
}

TEST(FormatOfRecords, ThreadsHaveNumbersOfTheirOwn) {
    const VelLogging::Writer here = VelLogging::CurrentWriter();
    VelLogging::Writer there = here;
    std::thread([&] { there = VelLogging::CurrentWriter(); }).join();
    EXPECT_EQ(here.process, there.process);
    EXPECT_NE(here.thread, there.thread);
    EXPECT_NE(here.thread, 0U);
}

}  // namespace
}  // namespace VelLoggingTests

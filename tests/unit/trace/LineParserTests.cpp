// Lines of the log, whole and hostile.
#include "velsock-trace/LineParser.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace VelSockTrace;

constexpr const char* Text =
    "Sent 5 bytes, Local address: 127.0.0.1 (4000), Remote address: 127.0.0.1 (40123), data: "
    "68656C6C6F";
constexpr std::int64_t Time = 1'795'352'462'123'456;

struct Parsed {
    explicit Parsed(std::string_view text) : line(text), kind(parser.Parse(line, record)) {}

    std::string line;
    LineParser parser;
    Record record;
    LineKind kind;
};

Parsed Plain(const std::string& category, const std::string& text) {
    return Parsed("2026-11-22T13:01:02.123456Z Network/" + category + ": " + text);
}

void ExpectSent(const Parsed& parsed, std::uint64_t process, std::uint64_t mark) {
    ASSERT_EQ(parsed.kind, LineKind::Record);
    const Record& record = parsed.record;
    EXPECT_EQ(record.kind, RecordKind::Sent);
    EXPECT_EQ(record.time, Time);
    EXPECT_EQ(record.length, 5U);
    EXPECT_TRUE(record.hasData);
    EXPECT_FALSE(record.isDamaged);
    EXPECT_EQ(record.data, "68656C6C6F");
    EXPECT_EQ(record.ends, "127.0.0.1 (4000), Remote address: 127.0.0.1 (40123)");
    EXPECT_EQ(record.text, Text);
    EXPECT_EQ(record.process, process);
    EXPECT_EQ(record.mark, mark);
}

TEST(LineParserForms, ThePlainOneHasNoMark) {
    ExpectSent(Plain("Verbose Packet Trace", Text), 0, 0);
}

TEST(LineParserForms, TextHasProcessAndMark) {
    const std::string head = "2026-11-22T13:01:02.123456Z [4711:4712] ";
    ExpectSent(Parsed(head + "#17 Network/Verbose Packet Trace: " + Text), 4711, 17);
    ExpectSent(Parsed(head + "Network/Verbose Packet Trace: " + Text), 4711, 0);
}

TEST(LineParserForms, LogfmtHasNamedMembers) {
    const std::string text = std::string(" text=\"") + Text + "\"";
    const std::string head = "time=2026-11-22T13:01:02.123456Z pid=4711 tid=4712 ";
    const std::string names = "router=Network category=\"Verbose Packet Trace\"";
    ExpectSent(Parsed(head + "connection=17 " + names + text), 4711, 17);
    ExpectSent(Parsed(head + names + text), 4711, 0);
}

TEST(LineParserForms, JsonHasNamedMembersInAnyOrder) {
    const std::string text = std::string(R"("text":")") + Text + R"(")";
    const std::string rest =
        R"("pid":4711,"tid":4712,"connection":17,"router":"Network","category":"Verbose Packet Trace")";
    const std::string time = R"("time":"2026-11-22T13:01:02.123456Z")";
    ExpectSent(Parsed("{" + time + "," + rest + "," + text + "}"), 4711, 17);
    ExpectSent(Parsed("{ " + text + " , " + rest + " , \"other\":null," + time + " }"), 4711, 17);
}

TEST(LineParserForms, EscapesAreResolved) {
    const Parsed parsed(
        "time=2026-11-22T13:01:02.123456Z router=Network category=Error "
        R"(text="a\"b\\c\n\u00e9\u274d\ud83d\ude00\u")");
    ASSERT_EQ(parsed.kind, LineKind::Record);
    EXPECT_EQ(parsed.record.text, "a\"b\\c\n\u00e9\u274d\U0001F600\uFFFD");
}

TEST(LineParserForms, ACarriageReturnBelongsToTheEnd) {
    ExpectSent(Plain("Verbose Packet Trace", std::string(Text) + "\r"), 0, 0);
}

TEST(LineParserKinds, AreToldByTheText) {
    const std::string ends = "Local address: a (1), Remote address: b (2)";
    EXPECT_EQ(Plain("Connection Trace", "Connected, " + ends).record.kind, RecordKind::Connected);
    EXPECT_EQ(Plain("Connection Trace", "Disconnected, " + ends).record.kind,
              RecordKind::Disconnected);
    EXPECT_EQ(Plain("Packet Trace", "Received 1 bytes, " + ends).record.kind, RecordKind::Received);
    EXPECT_EQ(Plain("Packet Trace", "Sendto 1 bytes, " + ends).record.kind, RecordKind::SentTo);
    EXPECT_EQ(Plain("Packet Trace", "Recvfrom 0 bytes, " + ends).record.kind,
              RecordKind::ReceivedFrom);
    EXPECT_EQ(Plain("Error", "Connected, " + ends).record.kind, RecordKind::Failure);
}

TEST(LineParserForeign, LinesAreNotRecords) {
    using namespace std::string_literals;
    for (const std::string& line :
         {""s, "listening on 127.0.0.1 port 1"s, "\0\0\0"s, "{"s, "{}"s, "{\"time\":3}"s, "time="s,
          "2026-11-22T13:01:02.123456Z"s, "2026-11-22T13:01:02.123456Z Other/Error: x"s,
          "2026-02-30T13:01:02.123456Z Network/Error: x"s,
          "2026-11-22T25:01:02.123456Z Network/Error: x"s,
          "2026-11-22T13:01:02.123456Z Network/Unknown: x"s,
          "2026-11-22T13:01:02.123456Z [1:2 Network/Error: x"s,
          "2026-11-22T13:01:02.123456Z [1:99999999999999999999] Network/Error: x"s}) {
        EXPECT_EQ(Parsed(line).kind, LineKind::Foreign) << line;
    }
}

TEST(LineParserBroken, RecordsAreTold) {
    const std::string ends = "Local address: a (1), Remote address: b (2)";
    for (const std::string& text :
         {std::string("Sent"), std::string("Sent 5 bytes"), "Sent 2147483648 bytes, " + ends,
          "Sent -1 bytes, " + ends, "Sent 99999999999999999999999 bytes, " + ends,
          "Sent x bytes, " + ends, "Gave 5 bytes, " + ends,
          std::string("Sent 5 bytes, Local address: a (1), Remote addr"),
          std::string("Sent 5 bytes, Local address: a (1)")}) {
        EXPECT_EQ(Plain("Packet Trace", text).kind, LineKind::Broken) << text;
    }
    EXPECT_EQ(Plain("Verbose Packet Trace", "Sent 5 bytes, " + ends).kind, LineKind::Broken);
    EXPECT_EQ(Plain("Connection Trace", "Reconnected, " + ends).kind, LineKind::Broken);
}

TEST(LineParserBroken, DataThatIsNotWholeStillCounts) {
    const std::string text(Text);
    const Parsed parsed = Plain("Verbose Packet Trace", text.substr(0, text.size() - 3));
    ASSERT_EQ(parsed.kind, LineKind::Record);
    EXPECT_TRUE(parsed.record.isDamaged);
    EXPECT_EQ(parsed.record.length, 5U);
}

TEST(LineParserBroken, AStringThatWasCutEndsWithTheLine) {
    const Parsed parsed(
        R"({"time":"2026-11-22T13:01:02.123456Z","router":"Network","category":"Error","text":"half)");
    ASSERT_EQ(parsed.kind, LineKind::Record);
    EXPECT_EQ(parsed.record.text, "half");
}

}  // namespace

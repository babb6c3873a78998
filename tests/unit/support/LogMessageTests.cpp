#include <VelBase/WideLiteral.h>
#include <VelLog/LogMessage.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <type_traits>

#include "LogTest.h"
#include "support/OutOfMemory.h"

namespace {

using Support::Log;
using Support::RecordingSink;
using Support::SinkScope;
using VelBase::operator""_wide;
using VelLog::GetMessageFormatter;
using VelLog::LogMessage;
using VelLog::Router;
using Texts = std::vector<std::u16string>;

static_assert(std::is_same_v<decltype(&LogMessage),
                             void (*)(Router&, const char*, VelResource::MessageFormatter&,
                                      const char*, const char*, const char*, int)>);

// Does what a test wants of a sink.
class ActingSink : public VelLog::LogSink {
public:
    explicit ActingSink(std::function<void()> act) : act_(std::move(act)) {}
    void Write(const VelLog::LogRecord&) override { act_(); }

private:
    std::function<void()> act_;
};

class LogMessages : public Scripted::PlatformTest {
protected:
    void LogWide(const unsigned short* text) {
        LogMessage(router_, "%1", GetMessageFormatter().AddWideText(text), "\"%1\"", nullptr,
                   nullptr, 0);
    }

    Router router_{"Network", "Connection Trace"};
};

TEST_F(LogMessages, RecordReachesTheSinkWithRouterCategoryAndText) {
    RecordingSink sink;
    const SinkScope scope(sink);
    LogMessage(router_, "Local address: %1 (%2)",
               GetMessageFormatter().AddNarrowText("10.1.2.3").AddInteger(80),
               "\"Local address: %1 (%2)\"", nullptr, nullptr, 0);
    ASSERT_EQ(sink.Records().size(), 1u);
    EXPECT_EQ(sink.Records()[0].router, "Network");
    EXPECT_EQ(sink.Records()[0].category, "Connection Trace");
    EXPECT_EQ(sink.Records()[0].text, u"Local address: 10.1.2.3 (80)");
}

TEST_F(LogMessages, BookkeepingArgumentsLeaveNoTrace) {
    RecordingSink sink;
    const SinkScope scope(sink);
    LogMessage(router_, "text", GetMessageFormatter(), "quoted", "source", "function", 42);
    LogMessage(router_, "text", GetMessageFormatter(), nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(sink.Texts(), (Texts{u"text", u"text"}));
}

TEST_F(LogMessages, RecordIsStampedWithTheTimeOfWriting) {
    using namespace std::chrono;
    const auto now = [] {
        return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
    };
    RecordingSink sink;
    const SinkScope scope(sink);
    const long long before = now();
    Log(router_, "text");
    const long long after = now();
    EXPECT_LE(before, sink.Records().at(0).microsecondsSince1970);
    EXPECT_LE(sink.Records().at(0).microsecondsSince1970, after);
}

TEST_F(LogMessages, RecordHasTheFormattersConnectionAndTheNextOneNone) {
    RecordingSink sink;
    const SinkScope scope(sink);
    VelResource::MessageFormatter& formatter = GetMessageFormatter();
    formatter.SetConnection(4294967295U);
    LogMessage(router_, "text", formatter, "", nullptr, nullptr, 0);
    Log(router_, "text");
    EXPECT_EQ(sink.Records().at(0).connection, 4294967295U);
    EXPECT_EQ(sink.Records().at(1).connection, 0U);
}

TEST_F(LogMessages, NothingIsRenderedWithoutASink) {
    const Scripted::Allocations::Mark mark;
    Log(router_, "text");
    EXPECT_EQ(mark.Requests(), 0u);
    EXPECT_EQ(GetMessageFormatter().ArgumentCount(), 0);
    EXPECT_EQ(Scripted::Transcript(), std::vector<std::string>{});
}

TEST_F(LogMessages, FormatterIsEmptyAfterwards) {
    VelResource::MessageFormatter& formatter = GetMessageFormatter();
    LogMessage(router_, "%1", formatter.AddInteger(1), "", nullptr, nullptr, 0);
    EXPECT_EQ(formatter.ArgumentCount(), 0);
    RecordingSink recording;
    ActingSink throwing([] { throw 1; });
    for (VelLog::LogSink* sink :
         {static_cast<VelLog::LogSink*>(&recording), static_cast<VelLog::LogSink*>(&throwing)}) {
        const SinkScope scope(*sink);
        LogMessage(router_, "%1", formatter.AddInteger(1), "", nullptr, nullptr, 0);
        EXPECT_EQ(formatter.ArgumentCount(), 0);
    }
    EXPECT_EQ(recording.Texts(), Texts{u"1"});
}

TEST_F(LogMessages, LineBreaksCannotFakeASecondRecord) {
    RecordingSink sink;
    const SinkScope scope(sink);
    Log(router_, "host\r\n2026-11-21T16:41:47.000000Z Network/Error: all is well\x1B[2K");
    Log(router_, "C:\\u000A\ttab");
    EXPECT_EQ(sink.Texts(), (Texts{u"host\\u000D\\u000A2026-11-21T16:41:47.000000Z Network/Error: "
                                   u"all is well\\u001B[2K",
                                   u"C:\\u000A\\u0009tab"}));
}

bool MustBeVisible(int unit) {
    return unit < 0x20 || unit == 0x7F || (unit >= 0x80 && unit <= 0x9F) || unit == 0x2028 ||
           unit == 0x2029 || unit == 0x061C || unit == 0x200E || unit == 0x200F ||
           (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
}

std::u16string Escape(int unit) {
    char digits[8];
    std::snprintf(digits, sizeof digits, "\\u%04X", static_cast<unsigned>(unit));
    return {digits, digits + 6};
}

TEST_F(LogMessages, ExactlyTheControlsAreMadeVisible) {
    RecordingSink sink;
    const SinkScope scope(sink);
    for (int unit = 1; unit <= 0xFFFF; ++unit) {
        const unsigned short text[] = {'<', static_cast<unsigned short>(unit), '>', 0};
        LogWide(text);
    }
    ASSERT_EQ(sink.Records().size(), 0xFFFFu);
    for (int unit = 1; unit <= 0xFFFF; ++unit) {
        const std::u16string shown =
            MustBeVisible(unit) ? Escape(unit) : std::u16string{static_cast<char16_t>(unit)};
        ASSERT_EQ(sink.Records()[static_cast<std::size_t>(unit) - 1].text, u"<" + shown + u">");
    }
}

TEST_F(LogMessages, ControlsOfTheFormatAreMadeVisibleToo) {
    RecordingSink sink;
    const SinkScope scope(sink);
    Log(router_, "\x85", "a\nb%1\xE2\x80\xA8\xE2\x80\xAE");
    EXPECT_EQ(sink.Texts(), Texts{u"a\\u000Ab\\u0085\\u2028\\u202E"});
}

TEST_F(LogMessages, SinkThatThrowsLosesItsRecordOnly) {
    int writes = 0;
    ActingSink sink([&] {
        if (++writes == 1) throw std::runtime_error("disk full");
        if (writes == 2) throw 42;
    });
    const SinkScope scope(sink);
    for (int record = 0; record < 3; ++record)
        EXPECT_NO_THROW(Log(router_, "text"));
    EXPECT_EQ(writes, 3);
}

TEST_F(LogMessages, ErrorNumbersAreKept) {
    ActingSink sink([] {
        errno = EPIPE;
        Scripted::SetLastError(10054);
        throw std::runtime_error("lost");
    });
    const SinkScope scope(sink);
    errno = EAGAIN;
    Scripted::SetLastError(10035);
    Log(router_, "text");
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(Scripted::LastError(), 10035);
}

TEST_F(LogMessages, ThreadCannotBeCancelledWhileTheSinkWrites) {
    std::vector<int> held;
    ActingSink sink([&] {
        held.push_back(Scripted::CancellationsHeld());
        if (held.size() == 2) throw std::runtime_error("lost");
    });
    const SinkScope scope(sink);
    for (int record = 0; record < 3; ++record) {
        Log(router_, "text");
        EXPECT_EQ(Scripted::CancellationsHeld(), 0) << record;
    }
    EXPECT_EQ(held, (std::vector<int>{1, 1, 1}));
}

TEST_F(LogMessages, RecordsOfASinkItselfAreDropped) {
    RecordingSink recording;
    int writes = 0;
    ActingSink sink([&] {
        if (++writes > 1) return;
        Log(router_, "from within");
        VelLog::SetSink(&recording);
        Log(router_, "from within, for the next sink");
        VelLog::SetSink(&sink);
    });
    const SinkScope scope(sink);
    Log(router_, "text");
    EXPECT_EQ(writes, 1);
    EXPECT_EQ(recording.Texts(), Texts{});
    Log(router_, "text");
    EXPECT_EQ(writes, 2);
}

TEST_F(LogMessages, ASinkThatEndsWithinAnotherOneLeavesThatOneSet) {
    int writes = 0;
    ActingSink sink([&] {
        ++writes;
        const RecordingSink brief;
    });
    const SinkScope scope(sink);
    Log(router_, "first");
    Log(router_, "second");
    EXPECT_EQ(writes, 2);
}

TEST_F(LogMessages, RecordsAreAcceptedAgainAfterASinkThrew) {
    ActingSink throwing([] { throw 1; });
    const SinkScope scope(throwing);
    Log(router_, "lost");
    RecordingSink recording;
    VelLog::SetSink(&recording);
    Log(router_, "kept");
    VelLog::SetSink(nullptr);
    EXPECT_EQ(recording.Texts(), Texts{u"kept"});
}

TEST_F(LogMessages, SinkMaySetAnotherWhileItWrites) {
    RecordingSink next;
    VelLog::LogSink* replaced = nullptr;
    ActingSink first([&] { replaced = VelLog::SetSink(&next); });
    const SinkScope scope(first);
    Log(router_, "first");
    Log(router_, "second");
    VelLog::SetSink(nullptr);
    EXPECT_EQ(replaced, &first);
    EXPECT_EQ(next.Texts(), Texts{u"second"});
}

TEST_F(LogMessages, SinkMaySwitchRoutersWhileItWrites) {
    bool switched = false;
    ActingSink sink([&] {
        switched = VelLog::SetRouterEnabled("Network", "Error", true) &&
                   VelLog::SetRouterEnabled("Network", "Error", false);
    });
    const SinkScope scope(sink);
    Log(router_, "text");
    EXPECT_TRUE(switched);
}

TEST_F(LogMessages, SettingASinkReturnsTheEarlierOne) {
    RecordingSink first, second;
    EXPECT_EQ(VelLog::SetSink(&first), nullptr);
    EXPECT_EQ(VelLog::SetSink(&second), &first);
    EXPECT_EQ(VelLog::SetSink(nullptr), &second);
    EXPECT_EQ(VelLog::SetSink(nullptr), nullptr);
}

TEST_F(LogMessages, ASinkThatIsDestroyedIsNoLongerSet) {
    {
        RecordingSink dying;
        VelLog::SetSink(&dying);
    }
    Log(router_, "unheard");
    EXPECT_EQ(VelLog::SetSink(nullptr), nullptr);
}

TEST_F(LogMessages, ASinkThatIsDestroyedLeavesAnotherSet) {
    RecordingSink staying;
    {
        RecordingSink dying;
        VelLog::SetSink(&dying);
        VelLog::SetSink(&staying);
    }
    Log(router_, "heard");
    EXPECT_EQ(VelLog::SetSink(nullptr), &staying);
    EXPECT_EQ(staying.Texts(), Texts{u"heard"});
}

TEST_F(LogMessages, ASinkMayEndItselfWhileItWrites) {
    std::unique_ptr<ActingSink> sink;
    sink = std::make_unique<ActingSink>([&] { delete sink.release(); });
    VelLog::SetSink(sink.get());
    Log(router_, "last");
    Log(router_, "unheard");
    EXPECT_EQ(VelLog::SetSink(nullptr), nullptr);
}

TEST_F(LogMessages, FailingAllocationsLoseTheRecordOnly) {
    int writes = 0;
    ActingSink sink([&] { ++writes; });
    const SinkScope scope(sink);
    int lost = 0;
    for (bool happened = true; happened; ++lost) {
        const Scripted::Allocations::FailNth failing(static_cast<std::size_t>(lost) + 1);
        Log(router_, "a text\nwith a line break", "a long format around %1");
        happened = failing.Happened();
    }
    EXPECT_GT(lost, 3);
    EXPECT_EQ(writes, 1);
}

}  // namespace

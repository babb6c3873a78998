#include <VelBase/ExceptionImpl.h>
#include <VelLog/FileSink.h>
#include <VelLog/StandardErrorSink.h>

#include <memory>
#include <optional>

#include "LogTest.h"
#include "support/OutOfMemory.h"

namespace {

using namespace Scripted;
using VelBase::ExceptionImpl;
using VelBase::Message;
using VelLog::FileSink;
using VelLog::LogRecord;
using VelLog::StandardErrorSink;

static_assert(std::is_base_of_v<VelLog::LogSink, FileSink>);
static_assert(std::is_base_of_v<VelLog::LogSink, StandardErrorSink>);
static_assert(std::has_virtual_destructor_v<VelLog::LogSink>);
static_assert(!std::is_copy_constructible_v<FileSink> && !std::is_copy_assignable_v<FileSink>);
static_assert(!std::is_copy_constructible_v<StandardErrorSink>);

constexpr long long SomeTime = 1'795'279'307'123'456;

class ReadyMadeSinks : public PlatformTest {
protected:
    static void Write(VelLog::LogSink& sink, std::u16string_view text, long long time = SomeTime) {
        sink.Write({"Network", "Packet Trace", Wide(text).data(), time});
    }
};

TEST_F(ReadyMadeSinks, RecordIsOneLineWrittenInOnePiece) {
    FileSink sink("/var/log/velsock.log");
    Write(sink, u"Sent 3 bytes, h\u00F6st \u20AC \U0001F600");
    EXPECT_EQ(LogFileContents("/var/log/velsock.log"),
              "2026-11-21T16:41:47.123456Z Network/Packet Trace: Sent 3 bytes, h\xC3\xB6st "
              "\xE2\x82\xAC \xF0\x9F\x98\x80\n");
    EXPECT_EQ(CountOf("WriteLogFile"), 1);
}

TEST_F(ReadyMadeSinks, BothWriteTheSameLine) {
    StandardErrorSink standardError;
    FileSink file("log");
    Write(standardError, u"Sent 3 bytes");
    Write(file, u"Sent 3 bytes");
    EXPECT_EQ(StandardErrorContents(),
              "2026-11-21T16:41:47.123456Z Network/Packet Trace: Sent 3 bytes\n");
    EXPECT_EQ(LogFileContents("log"), StandardErrorContents());
}

TEST_F(ReadyMadeSinks, TimesAreWrittenInFull) {
    StandardErrorSink sink;
    Write(sink, u"", 0);
    Write(sink, u"", 951'825'599'000'009);
    Write(sink, u"", 253'402'300'799'999'999);
    Write(sink, u"", -1);
    EXPECT_EQ(StandardErrorContents(),
              "1970-01-01T00:00:00.000000Z Network/Packet Trace: \n"
              "2000-02-29T11:59:59.000009Z Network/Packet Trace: \n"
              "9999-12-31T23:59:59.999999Z Network/Packet Trace: \n"
              "1969-12-31T23:59:59.999999Z Network/Packet Trace: \n");
}

TEST_F(ReadyMadeSinks, EveryRecordIsAppended) {
    FileSink sink("log");
    Write(sink, u"first", 0);
    Write(sink, u"second", 0);
    EXPECT_EQ(LogFileContents("log"),
              "1970-01-01T00:00:00.000000Z Network/Packet Trace: first\n"
              "1970-01-01T00:00:00.000000Z Network/Packet Trace: second\n");
}

TEST_F(ReadyMadeSinks, FileIsOpenAsLongAsItsSinkLives) {
    {
        const FileSink sink("log");
        EXPECT_EQ(Ledger(), std::vector<std::string>{"log file 3"});
    }
    EXPECT_EQ(Ledger(), std::vector<std::string>{});
    EXPECT_EQ(Transcript(), (std::vector<std::string>{"OpenLogFile(\"log\")", "CloseLogFile(3)"}));
}

TEST_F(ReadyMadeSinks, StandardErrorIsNotClosed) {
    { const StandardErrorSink sink; }
    EXPECT_EQ(CountOf("CloseLogFile"), 0);
}

TEST_F(ReadyMadeSinks, FileThatCannotBeOpenedIsNamedWithTheReason) {
    On::OpenLogFile().Fails(13);
    On::ErrorDescription().Returns(u"Permission denied");
    try {
        const FileSink sink("/h\xC3\xB6me/velsock.log");
        FAIL() << "no exception";
    } catch (const ExceptionImpl<Message>& exception) {
        EXPECT_EQ(Text(exception.GetMessage()),
                  u"Cannot open the log file /h\u00F6me/velsock.log: Permission denied");
        EXPECT_EQ(exception.GetID(), 13);
        EXPECT_EQ(exception.GetDomain(), VelBase::MESSAGE_DOMAIN_UNKNOWN);
    }
    EXPECT_EQ(Transcript(), (std::vector<std::string>{"OpenLogFile(\"/h\\xC3\\xB6me/velsock.log\")",
                                                      "ErrorDescription(13)"}));
}

TEST_F(ReadyMadeSinks, NullPathIsTheEmptyPath) {
    On::OpenLogFile().Fails(2);
    EXPECT_THROW(FileSink(nullptr), Message);
    EXPECT_EQ(Transcript().at(0), "OpenLogFile(\"\")");
}

TEST_F(ReadyMadeSinks, RecordThatCannotBeWrittenIsLost) {
    On::WriteLogFile().Fails(28);
    FileSink sink("log");
    EXPECT_NO_THROW(Write(sink, u"lost", 0));
    Write(sink, u"kept", 0);
    EXPECT_EQ(LogFileContents("log"), "1970-01-01T00:00:00.000000Z Network/Packet Trace: kept\n");
}

constexpr char KeptLine[] = "1970-01-01T00:00:00.000000Z Network/Packet Trace: kept\n";

// As when the disk is full: half of it is there, and what comes later begins a line of its own.
TEST_F(ReadyMadeSinks, RecordThatIsWrittenInPartIsALineOfItsOwn) {
    FileSink file("log");
    StandardErrorSink standardError;
    for (VelLog::LogSink* const sink :
         {static_cast<VelLog::LogSink*>(&file), static_cast<VelLog::LogSink*>(&standardError)}) {
        On::WriteLogFile().Returns(10).Fails(28).Passes(2);
        Write(*sink, u"cut", 0);
        Write(*sink, u"lost", 0);
        Write(*sink, u"kept", 0);
        Write(*sink, u"kept", 0);
    }
    EXPECT_EQ(LogFileContents("log"), std::string("1970-01-01\n") + KeptLine + KeptLine);
    EXPECT_EQ(StandardErrorContents(), LogFileContents("log"));
}

TEST_F(ReadyMadeSinks, RecordThatIsCutAgainEndsTheLineBefore) {
    FileSink sink("log");
    On::WriteLogFile().Returns(10).Returns(5).Returns(1).Passes();
    Write(sink, u"cut", 0);
    Write(sink, u"cut", 0);
    Write(sink, u"cut", 0);
    Write(sink, u"kept", 0);
    EXPECT_EQ(LogFileContents("log"), std::string("1970-01-01\n1970\n") + KeptLine);
}

TEST_F(ReadyMadeSinks, FileThatEndsWithinALineIsGivenItsEnd) {
    {
        FileSink sink("log");
        On::WriteLogFile().Returns(10);
        Write(sink, u"cut", 0);
    }
    FileSink sink("log");
    Write(sink, u"kept", 0);
    FileSink another("log");
    Write(another, u"kept", 0);
    EXPECT_EQ(LogFileContents("log"), std::string("1970-01-01\n") + KeptLine + KeptLine);
}

TEST_F(ReadyMadeSinks, SinksTakeTheRecordsOfTheLog) {
    FileSink sink("log");
    const Support::SinkScope scope(sink);
    VelLog::Router router("Network", "Error");
    Support::Log(router, "line\nbreak");
    const std::string line = LogFileContents("log");
    EXPECT_EQ(line.substr(line.find(' ')), " Network/Error: line\\u000Abreak\n");
    EXPECT_EQ(line.size(), std::string("2026-11-21T16:41:47.123456Z").size() +
                               std::string(" Network/Error: line\\u000Abreak\n").size());
}

TEST_F(ReadyMadeSinks, EveryFailingAllocationIsReported) {
    FileSink sink("log");
    const auto text = Wide(u"a text that is longer than any short text \u20AC");
    Support::ExpectBadAllocFromEveryAllocation(2, [&] {
        sink.Write({"Network", "Packet Trace", text.data(), SomeTime});
    });
}

TEST_F(ReadyMadeSinks, FailingAllocationsWhileOpeningFailsLeaveNothing) {
    for (std::size_t number = 1;; ++number) {
        On::OpenLogFile().Fails(13);
        const Allocations::FailNth failing(number);
        try {
            const FileSink sink("log");
        } catch (const Message& message) {
            EXPECT_EQ(message.GetID(), 13);
            EXPECT_FALSE(failing.Happened());
            EXPECT_GT(number, 3u);
            return;
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(failing.Happened());
        }
    }
}

}  // namespace

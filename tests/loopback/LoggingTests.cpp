// The host's hold on the log: routers, sinks.
#include <VelLog/FileSink.h>
#include <VelLog/LogControl.h>
#include <VelLog/StandardErrorSink.h>
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketInitialization.h>
#include <loopback/LoopbackTest.h>
#include <loopback/ThisProcess.h>
#include <support/TemporaryFolder.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <sstream>
#include <string_view>

namespace Loopback {
namespace {

using VelLog::SetRouterEnabled;
using VelLog::SetSink;

class Logging : public LoopbackTest {};

Failure FailAndLog(const char* text) {
    return FailureOf([text] { VelNet::SocketAddress::ConvertDottedStringToOctets(text); });
}

TEST(LoggingWithoutLayer, RoutersSwitchedBeforeTheLayerStartsAreOnWhenItHasStarted) {
    RecordingSink sink;
    SetSink(&sink);
    EnableOnly({Error});
    for (int round = 0; round < 2; ++round) {
        const VelNet::SocketInitialization layer;
        EXPECT_EQ(sink.Take(), Records{});
        const Failure failure = FailAndLog("x");
        EXPECT_EQ(sink.Take(), (Records{{Error, failure.text}}));
    }
    EnableOnly({});
    const VelNet::SocketInitialization layer;
    FailAndLog("x");
    EXPECT_EQ(sink.Take(), Records{});
    SetSink(nullptr);
}

// The order in which a program's main function ends that has set its sink after its sockets.
TEST(LoggingWithoutLayer, ASinkMayEndBeforeWhatItHearsOf) {
    const VelNet::SocketInitialization layer;
    const Connection connection = Connected();
    {
        RecordingSink sink;
        SetSink(&sink);
        EnableOnly({ConnectionTrace, Error});
        FailAndLog("heard");
        EXPECT_EQ(sink.Take().size(), 1U);
    }
    connection.client->Close();
    FailAndLog("unheard");
    EXPECT_EQ(SetSink(nullptr), nullptr);
    EnableOnly({});
}

TEST_F(Logging, TheNamesOfTheRoutersAreThose) {
    EXPECT_STREQ(VelLog::CATEGORY_ERROR, Error);
    EXPECT_STREQ(VelLog::CATEGORY_CONNECTION_TRACE, ConnectionTrace);
    EXPECT_STREQ(VelLog::CATEGORY_PACKET_TRACE, PacketTrace);
    EXPECT_STREQ(VelLog::CATEGORY_VERBOSE_PACKET_TRACE, VerbosePacketTrace);
    EXPECT_TRUE(SetRouterEnabled(VelLog::ROUTER_NETWORK, VelLog::CATEGORY_ERROR, true));
    const Failure heard = FailAndLog("heard");
    EXPECT_EQ(Sink().Take(), (Records{{VelLog::CATEGORY_ERROR, heard.text}}));
}

TEST_F(Logging, RoutersAreSwitchedWhileTheLayerIsUp) {
    FailAndLog("unheard");
    EXPECT_TRUE(SetRouterEnabled("Network", Error, true));
    const Failure heard = FailAndLog("heard");
    EXPECT_TRUE(SetRouterEnabled("Network", Error, false));
    FailAndLog("unheard");
    EXPECT_EQ(Sink().Take(), (Records{{Error, heard.text}}));
}

TEST_F(Logging, OnlyTheRouterNamedIsSwitched) {
    EXPECT_TRUE(SetRouterEnabled("Network", PacketTrace, true));
    EXPECT_TRUE(SetRouterEnabled("network", Error, true));
    EXPECT_TRUE(SetRouterEnabled("Other", Error, true));
    FailAndLog("unheard");
    EXPECT_EQ(Sink().Take(), Records{});
}

TEST_F(Logging, NamesThatCannotBeKeptAreRefused) {
    EXPECT_FALSE(SetRouterEnabled(nullptr, Error, true));
    EXPECT_FALSE(SetRouterEnabled("Network", nullptr, true));
    EXPECT_FALSE(SetRouterEnabled("Network", std::string(64, 'x').c_str(), true));
}

TEST_F(Logging, SettingASinkGivesBackTheOneBefore) {
    RecordingSink other;
    EnableOnly({Error});
    EXPECT_EQ(SetSink(&other), &Sink());
    const Failure failure = FailAndLog("x");
    EXPECT_EQ(SetSink(nullptr), &other);
    FailAndLog("unheard");
    EXPECT_EQ(SetSink(&Sink()), nullptr);
    EXPECT_EQ(other.Take(), (Records{{Error, failure.text}}));
    EXPECT_EQ(Sink().Take(), Records{});
}

struct SinkFailure {};

class ThrowingSink : public VelLog::LogSink {
public:
    void Write(const VelLog::LogRecord&) override {
        ++calls;
        throw SinkFailure();
    }

    int calls = 0;
};

TEST_F(Logging, ASinkThatThrowsDisturbsNobody) {
    ThrowingSink sink;
    EnableAllRouters();
    SetSink(&sink);
    {
        const Connection connection = Connected();
        ExpectExchange(*connection.client, *connection.server);
        connection.server->Close();
        EXPECT_EQ(FailureOfReceive(*connection.client), ConnectionClosed());
    }
    SetSink(nullptr);
    // Connected twice, four transfers with two records each, one failure, three times disconnected.
    EXPECT_EQ(sink.calls, 2 + 8 + 1 + 3);
}

// Uses the library for every record, and fails at it.
class BusySink : public RecordingSink {
public:
    void Write(const VelLog::LogRecord& record) override {
        RecordingSink::Write(record);
        EXPECT_EQ(FailAndLog("inside").code, -1);
    }
};

TEST_F(Logging, WhatASinkCausesItselfIsNotLogged) {
    BusySink sink;
    EnableOnly({Error});
    SetSink(&sink);
    const Failure first = FailAndLog("outside");
    const Failure second = FailAndLog("outside again");
    SetSink(nullptr);
    EXPECT_EQ(sink.Take(), (Records{{Error, first.text}, {Error, second.text}}));
}

class TimeSink : public VelLog::LogSink {
public:
    void Write(const VelLog::LogRecord& record) override { time = record.microsecondsSince1970; }

    long long time = 0;
};

long long MicrosecondsSince1970() {
    using namespace std::chrono;
    return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
}

TEST_F(Logging, ARecordHasTheTimeAtWhichItWasWritten) {
    TimeSink sink;
    EnableOnly({Error});
    SetSink(&sink);
    const long long before = MicrosecondsSince1970();
    FailAndLog("x");
    const long long after = MicrosecondsSince1970();
    SetSink(nullptr);
    EXPECT_GE(sink.time, before);
    EXPECT_LE(sink.time, after);
}

// Where a log file may be made.
class LogPlace {
public:
    const char* Path() const { return path_.c_str(); }
    std::string Contents() const { return Support::ContentsOf(path_); }

private:
    const Support::TemporaryFolder folder_;
    const std::string path_ = (folder_.Path() / "log").string();
};

bool BeginsWithATime(std::string_view line) {
    constexpr std::string_view Form = "0000-00-00T00:00:00.000000Z ";  // 0 for any digit
    return std::equal(
        Form.begin(), Form.end(), line.begin(),
        line.begin() + static_cast<std::ptrdiff_t>(std::min(line.size(), Form.size())),
        [](char form, char character) {
            const bool isDigit = character >= '0' && character <= '9';
            return form == '0' ? isDigit : form == character;
        });
}

// The lines without their times, which differ each time. A line that has none stays as it is.
std::string WithoutTimes(const std::string& text) {
    std::istringstream lines(text);
    std::string rest;
    for (std::string line; std::getline(lines, line);) {
        rest += BeginsWithATime(line) ? line.substr(line.find(' ') + 1) : line;
        rest += "\n";
    }
    return rest;
}

// What FailAndLog leaves in the ready-made sinks.
std::string LineOf(const std::string& text) {
    return "Network/Error: VelNet::SocketAddress::ConvertDottedStringToOctets() - FAIL. The input "
           "parameter is not an Internet Protocol dotted address: " +
           text + "\n";
}

TEST_F(Logging, AFileSinkAppendsLinesInUtf8) {
    const LogPlace file;
    EnableOnly({Error});
    for (int round = 0; round < 2; ++round) {
        VelLog::FileSink sink(file.Path());
        SetSink(&sink);
        FailAndLog("one");
        FailAndLog("\xC3\xA9\xE2\x9D\x8D \xFF \n");
        SetSink(nullptr);
    }
    const std::string lines = LineOf("one") + LineOf("\xC3\xA9\xE2\x9D\x8D \xEF\xBF\xBD \\u000A");
    EXPECT_EQ(WithoutTimes(file.Contents()), lines + lines);
}

TEST_F(Logging, AFileSinkTakesAWholeExchange) {
    const LogPlace file;
    EnableAllRouters();
    VelLog::FileSink sink(file.Path());
    const SocketPtr listener = Listening();
    SetSink(&sink);
    const Connection connection = ConnectedThrough(*listener);
    SendAll(*connection.client, "A");
    SetSink(nullptr);

    const std::string client = std::to_string(PortOf(*connection.client));
    const std::string server = std::to_string(PortOf(*connection.server));
    const std::string ofClient =
        "Local address: 127.0.0.1 (" + client + "), Remote address: 127.0.0.1 (" + server + ")";
    const std::string ofServer =
        "Local address: 127.0.0.1 (" + server + "), Remote address: 127.0.0.1 (" + client + ")";
    EXPECT_EQ(WithoutTimes(file.Contents()),
              "Network/Connection Trace: Connected, " + ofClient +
                  "\nNetwork/Connection Trace: Connected, " + ofServer +
                  "\nNetwork/Packet Trace: Sent 1 bytes, " + ofClient +
                  "\nNetwork/Verbose Packet Trace: Sent 1 bytes, " + ofClient + ", data: 41\n");
}

TEST_F(Logging, AStandardErrorSinkWritesTheSameLines) {
    VelLog::StandardErrorSink sink;
    EnableOnly({Error});
    ThisProcess::StandardErrorCapture capture;
    SetSink(&sink);
    FailAndLog("one");
    FailAndLog("\xC3\xA9");
    SetSink(nullptr);
    EXPECT_EQ(WithoutTimes(capture.Finish()), LineOf("one") + LineOf("\xC3\xA9"));
}

}  // namespace
}  // namespace Loopback

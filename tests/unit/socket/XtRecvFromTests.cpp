// SocketXt::RecvFrom.
#include <climits>

#include "XtFixture.h"

namespace SocketTests {
namespace {

const XtFailure NotReceived{"VelNet::SocketXtImpl::RecvFrom",
                            "cannot recvfrom using connectionless socket", "::recvfrom", "no-ip",
                            "no-port"};
const XtFailure SenderNotTold{"VelNet::SocketXtImpl::RecvFrom", "cannot get remote host and port",
                              "::getnameinfo", "no-ip", "no-port"};

Record PlainRecord(int count, const std::string& host, const std::string& port) {
    return XtTransferRecord("Recvfrom", count, LocalText, LocalService, host, port);
}

Record RecordWithData(int count, const std::string& host, const std::string& port,
                      const std::string& data) {
    return XtTransferRecordWithData("Recvfrom", count, LocalText, LocalService, host, port, data);
}

class XtRecvFrom : public XtTest {
protected:
    void TearDown() override {
        host_ = {};
        port_ = {};
        XtTest::TearDown();
    }

    static VelBase::ReturnPtrI<SocketXtImpl> MakeReceiver() {
        auto socket = MakeDatagramXt();
        StoreTexts(*socket);
        return socket;
    }

    static void ScriptDatagram(const std::string& bytes = "abc") {
        On::Recvfrom().Delivers(bytes, "10.0.0.9", 4711);
    }

    int ReceiveOn(SocketXt& socket, int length = 8) {
        return socket.RecvFrom(buffer_, length, host_, port_);
    }

    char buffer_[8] = {};
    VelBase::ReturnString host_{"earlier host"};
    VelBase::ReturnString port_{"earlier port"};
};

TEST_F(XtRecvFrom, ReceivesAsksForTheSendersTextsRecordsAndCleansUp) {
    const auto socket = MakeReceiver();
    ScriptDatagram();
    EXPECT_EQ(ReceiveOn(*socket), 3);
    EXPECT_STREQ(buffer_, "abc");
    EXPECT_STREQ(host_.c_str(), "10.0.0.9");
    EXPECT_STREQ(port_.c_str(), "4711");
    EXPECT_EQ(
        Transcript(),
        (Lines{"WSAStartup(0x0101)", "recvfrom(1001, 8, 0, 128)",
               "getnameinfo(10.0.0.9:4711, 128, 1025, 32, 26)",
               "LogMessage(Packet Trace, \"Recvfrom 3 bytes, Local address: here.example (4000), "
               "Remote address: 10.0.0.9 (4711)\")",
               "LogMessage(Verbose Packet Trace, \"Recvfrom 3 bytes, Local address: here.example "
               "(4000), Remote address: 10.0.0.9 (4711), data: 616263\")",
               "WSACleanup()"}));
    EXPECT_EQ(LastEventOf("recvfrom").pointer, buffer_);
    ExpectRecords(
        {PlainRecord(3, "10.0.0.9", "4711"), RecordWithData(3, "10.0.0.9", "4711", "616263")});
}

TEST_F(XtRecvFrom, PassesEveryLengthOn) {
    SwitchPacketTracing(false, false);
    const auto socket = MakeReceiver();
    for (const int length : {0, 1, INT_MAX, -1, INT_MIN}) {
        On::Recvfrom().Returns(0);
        On::Getnameinfo().Returns("host", "port");
        EXPECT_EQ(ReceiveOn(*socket, length), 0);
        EXPECT_EQ(LastEventOf("recvfrom").text,
                  "recvfrom(1001, " + std::to_string(length) + ", 0, 128)");
    }
}

TEST_F(XtRecvFrom, ServiceIsAskedForAsADatagramsOnDatagramSocketsAlone) {
    for (const auto& [type, flags] :
         std::vector<std::pair<int, int>>{{2, 26}, {1, 10}, {0, 10}, {3, 10}, {-2, 10}}) {
        const auto socket = MakeXt(STATE_CREATED, type);
        ScriptDatagram();
        ReceiveOn(*socket);
        EXPECT_EQ(LastEventOf("getnameinfo").numbers.back(), flags) << type;
    }
}

TEST_F(XtRecvFrom, SenderIsPutToTheResolverWithTheLengthOfTheStorage) {
    const auto socket = MakeReceiver();
    On::Recvfrom()
        .DeliversFrom("abc", SocketAddressBytesIpv6("2001:DB8::9", 4711, 3))
        .DeliversFrom("abc", SocketAddressBytes("10.0.0.9", 4711))
        .Delivers("abc");
    On::Getnameinfo().Passes(2).Returns("nobody", "nothing");
    ReceiveOn(*socket);
    EXPECT_EQ(LastEventOf("getnameinfo").text,
              "getnameinfo([2001:DB8:0:0:0:0:0:9%3]:4711, 128, 1025, 32, 26)");
    ReceiveOn(*socket);
    EXPECT_EQ(LastEventOf("getnameinfo").bytes,
              SocketAddressBytes("10.0.0.9", 4711) + std::string(112, '\0'));
    ReceiveOn(*socket);
    EXPECT_EQ(LastEventOf("getnameinfo").bytes, std::string(128, '\0'));
    EXPECT_EQ(CountOf("getnameinfo"), 3);
}

TEST_F(XtRecvFrom, LongestTextsComeOutWhole) {
    const auto socket = MakeReceiver();
    ScriptDatagram();
    On::Getnameinfo().Returns(std::string(1024, 'h'), std::string(31, 'p'));
    ReceiveOn(*socket);
    EXPECT_EQ(host_.c_str(), std::string(1024, 'h'));
    EXPECT_EQ(port_.c_str(), std::string(31, 'p'));
}

// The port is stored last.
TEST_F(XtRecvFrom, OneVariableForBothTextsEndsAsThePort) {
    const auto socket = MakeReceiver();
    ScriptDatagram();
    EXPECT_EQ(socket->RecvFrom(buffer_, sizeof buffer_, host_, host_), 3);
    EXPECT_STREQ(host_.c_str(), "4711");
}

TEST_F(XtRecvFrom, EmptyDatagramIsADatagramLikeAnyOther) {
    const auto socket = MakeReceiver();
    ScriptDatagram("");
    EXPECT_EQ(ReceiveOn(*socket), 0);
    EXPECT_STREQ(host_.c_str(), "10.0.0.9");
    EXPECT_STREQ(port_.c_str(), "4711");
    ExpectRecords({PlainRecord(0, "10.0.0.9", "4711"), RecordWithData(0, "10.0.0.9", "4711", "")});
}

TEST_F(XtRecvFrom, SocketStaysAsItIsInEveryState) {
    for (const SocketState state : OpenStates) {
        const auto socket = MakeXt(state, 2, 17);
        StoreTexts(*socket);
        const XtFields before = FieldsOf(*socket);
        ScriptDatagram();
        ReceiveOn(*socket);
        EXPECT_EQ(FieldsOf(*socket), before);
    }
}

TEST_F(XtRecvFrom, WritesWhatTheRoutersAskFor) {
    const auto socket = MakeReceiver();
    std::vector<Record> expected;
    for (const Routers& routers : AllCombinationsOfRouters()) {
        Switch(routers);
        ClearTranscript();
        const int requestsBefore = FormatterRequests();
        ScriptDatagram("a\xC3");
        EXPECT_EQ(ReceiveOn(*socket), 2);
        if (routers.packet) expected.push_back(PlainRecord(2, "10.0.0.9", "4711"));
        if (routers.verbose)
            expected.push_back(RecordWithData(2, "10.0.0.9", "4711", "61FFFFFFC3"));
        ExpectRecords(expected);
        EXPECT_EQ(FormatterRequests() - requestsBefore, routers.packet + routers.verbose);
        EXPECT_EQ(CountOf("ComputerName"), 0);
    }
    EnableAllRouters();
}

TEST_F(XtRecvFrom, EachFailureIsReportedAndChangesNothing) {
    const auto socket = MakeReceiver();
    ExpectEachXtFailure({
        .failWith = [](int number) { On::Recvfrom().Fails(number); },
        .operation = [&] { ReceiveOn(*socket); },
        .failure = NotReceived,
        .calls = {"WSAStartup(0x0101)", "recvfrom(1001, 8, 0, 128)", "WSAGetLastError()"},
        .callsAfterwards = {"WSACleanup()"},
        .memory = MemoryOf(*socket, host_, port_),
    });
}

TEST_F(XtRecvFrom, NothingWaitingAndLongDatagramsAreFailures) {
    const auto socket = MakeReceiver();
    On::Recvfrom().Fails(10035).Fails(10040);
    EXPECT_EQ(Catch([&] { ReceiveOn(*socket); }).text,
              u"VelNet::SocketXtImpl::RecvFrom , cannot recvfrom using connectionless socket , "
              u"::recvfrom , no-ip : no-port , errno = \u2733 Resource temporarily unavailable");
    EXPECT_EQ(Catch([&] { ReceiveOn(*socket); }), NotReceived.With(10040));
}

TEST_F(XtRecvFrom, EachFailureToTellTheSenderIsLoggedAndTheDatagramReceived) {
    const auto socket = MakeReceiver();
    int count = 0;
    ExpectEachXtFailure({
        .failWith =
            [&](int number) {
                count = 0;
                ScriptDatagram();
                On::Getnameinfo().FailsReturning(8, number);
            },
        .operation =
            [&] {
                count = ReceiveOn(*socket);
                EXPECT_EQ(count, 3);
            },
        .failure = SenderNotTold,
        .calls = {"WSAStartup(0x0101)", "recvfrom(1001, 8, 0, 128)",
                  "getnameinfo(10.0.0.9:4711, 128, 1025, 32, 26)", "WSAGetLastError()"},
        .callsAfterwards = {"WSACleanup()"},
        .memory = MemoryOf(*socket, host_, port_),
        .isThrown = false,
    });
    EXPECT_EQ(count, 3);
}

TEST_F(XtRecvFrom, SenderThatCannotBeToldIsRecordedAsTheTextsStand) {
    const auto socket = MakeReceiver();
    ScriptDatagram();
    On::Getnameinfo().Fails(10047);
    EXPECT_EQ(ReceiveOn(*socket), 3);
    EXPECT_EQ(SystemCalls(),
              (Lines{"WSAStartup(0x0101)", "recvfrom(1001, 8, 0, 128)",
                     "getnameinfo(10.0.0.9:4711, 128, 1025, 32, 26)", "WSAGetLastError()",
                     "LogMessage", "LogMessage", "LogMessage", "WSACleanup()"}));
    ExpectRecords({SenderNotTold.RecordWith(10047), PlainRecord(3, "earlier host", "earlier port"),
                   RecordWithData(3, "earlier host", "earlier port", "616263")});
    EXPECT_EQ(LoggedTexts(ErrorCategory)[0],
              u"VelNet::SocketXtImpl::RecvFrom , cannot get remote host and port , ::getnameinfo , "
              u"no-ip : no-port , errno = \u273F Address family not supported by protocol family");
    EXPECT_STREQ(host_.c_str(), "earlier host");
    EXPECT_STREQ(port_.c_str(), "earlier port");
}

TEST_F(XtRecvFrom, ClosedSocketGoesToTheSystem) {
    const auto socket = MakeClosedXt();
    On::Recvfrom().Fails(10038);
    EXPECT_EQ(Catch([&] { ReceiveOn(*socket); }), NotReceived.With(10038));
    EXPECT_EQ(LastEventOf("recvfrom").text, "recvfrom(INVALID, 8, 0, 128)");
}

TEST_F(XtRecvFrom, LogThatFailsLosesTheRecordsAlone) {
    const auto socket = MakeReceiver();
    ScriptDatagram();
    On::LogMessage().Throws(7);
    EXPECT_EQ(ReceiveOn(*socket), 3);
    EXPECT_STREQ(host_.c_str(), "10.0.0.9");
    EXPECT_EQ(CountOf("WSACleanup"), 1);
}

TEST_F(XtRecvFrom, LogThatThrowsOnAFailureLeavesNothingOpen) {
    const auto socket = MakeReceiver();
    On::Recvfrom().Fails(10054);
    On::LogMessage().Throws(7);
    EXPECT_ANY_THROW(ReceiveOn(*socket));
    EXPECT_EQ(CountOf("WSACleanup"), 1);
}

// All memory is taken before the datagram is, which else stays with the system; for want of memory
// afterwards the records alone are lost.
TEST_F(XtRecvFrom, ExhaustedMemoryTakesNoDatagram) {
    const auto socket = MakeReceiver();
    int recordsLost = 0;
    const std::size_t failed = FailEveryAllocation([&](std::size_t n) {
        SCOPED_TRACE(n);
        host_ = "earlier host";
        port_ = "earlier port";
        ScriptDatagram();
        ClearTranscript();
        int count = 0;
        const Starved starved = Starve(n, [&] { count = ReceiveOn(*socket); });
        ForgetAnswers();
        EXPECT_EQ(CountOf("recvfrom"), starved.outOfMemory ? 0 : 1);
        EXPECT_EQ(count, starved.outOfMemory ? 0 : 3);
        EXPECT_STREQ(host_.c_str(), starved.outOfMemory ? "earlier host" : "10.0.0.9");
        EXPECT_STREQ(port_.c_str(), starved.outOfMemory ? "earlier port" : "4711");
        EXPECT_EQ(CountOf("WSACleanup"), 1);
        if (starved.happened && !starved.outOfMemory) ++recordsLost;
        return starved.happened;
    });
    EXPECT_GE(failed, 3U);
    EXPECT_GE(recordsLost, 1);
}

}  // namespace
}  // namespace SocketTests

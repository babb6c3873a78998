// SocketXt::Send and SocketXt::Receive.
#include <climits>

#include "ReceiveErrors.h"
#include "XtFixture.h"

namespace SocketTests {
namespace {

class XtTransferSend : public XtTest {};
class XtTransferReceive : public XtTest {};

constexpr char LocalEndpoint[] = "here.example:4000";
constexpr char RemoteEndpoint[] = "there.example:http";

const XtFailure NotSent{"VelNet::SocketXtImpl::Send", "send on socket failed", "::send",
                        LocalEndpoint, RemoteEndpoint};
const XtFailure NotReceived{"VelNet::SocketXtImpl::Receive", "recieve on socket failed", "::recv",
                            LocalEndpoint, RemoteEndpoint};
const XtFailure ClosedByPeer{"VelNet::SocketXtImpl::Receive",
                             "::recv could not be completed because the connection has been closed",
                             "::recv", "here.example:", LocalService};

Record PlainRecord(const std::string& event, int count) {
    return XtTransferRecord(event, count, LocalText, LocalService, RemoteText, RemoteService);
}

Record RecordWithData(const std::string& event, int count, const std::string& data) {
    return XtTransferRecordWithData(event, count, LocalText, LocalService, RemoteText,
                                    RemoteService, data);
}

std::vector<Record> RecordsOf(const std::string& event, const Routers& routers, int count,
                              const std::string& data) {
    std::vector<Record> records;
    if (routers.packet) records.push_back(PlainRecord(event, count));
    if (routers.verbose) records.push_back(RecordWithData(event, count, data));
    return records;
}

// Runs the transfer with each combination of routers.
void ExpectRecordsOfEachCombination(const std::string& event, const std::function<void()>& run,
                                    int count, const std::string& data) {
    std::vector<Record> expected;
    for (const Routers& routers : AllCombinationsOfRouters()) {
        Switch(routers);
        const int requestsBefore = FormatterRequests();
        run();
        const std::vector<Record> more = RecordsOf(event, routers, count, data);
        expected.insert(expected.end(), more.begin(), more.end());
        EXPECT_EQ(FormatterRequests() - requestsBefore, static_cast<int>(more.size()));
        ExpectRecords(expected);
    }
    EnableAllRouters();
}

TEST_F(XtTransferSend, MakesOneSystemCallWithoutFlagsThenRecords) {
    const auto socket = MakeAddressedXt();
    const XtFields before = FieldsOf(*socket);
    EXPECT_EQ(socket->Send("abcdef", 4), 4);
    EXPECT_EQ(FieldsOf(*socket), before);
    EXPECT_EQ(Transcript(),
              (Lines{"send(1001, \"abcd\", 4, 0)",
                     "LogMessage(Packet Trace, \"Sent 4 bytes, Local address: here.example (4000), "
                     "Remote address: there.example (http)\")",
                     "LogMessage(Verbose Packet Trace, \"Sent 4 bytes, Local address: here.example "
                     "(4000), Remote address: there.example (http), data: 61626364\")"}));
    ExpectRecords({PlainRecord("Sent", 4), RecordWithData("Sent", 4, "61626364")});
}

TEST_F(XtTransferSend, PassesBufferAndEveryLengthOn) {
    SwitchPacketTracing(false, false);
    const auto socket = MakeXt();
    const char buffer[] = "abc";
    socket->Send(buffer, 3);
    EXPECT_EQ(LastEventOf("send").pointer, buffer);
    for (const int length : {0, 1, INT_MAX, -1, INT_MIN}) {
        On::Send().Returns(0);
        EXPECT_EQ(socket->Send(nullptr, length), 0);
        EXPECT_EQ(LastEventOf("send").text, "send(1001, null, " + std::to_string(length) + ", 0)");
    }
}

TEST_F(XtTransferSend, ShortSendIsReturnedAsItIs) {
    const auto socket = MakeAddressedXt();
    On::Send().Returns(2).Returns(0);
    EXPECT_EQ(socket->Send("abc", 3), 2);
    EXPECT_EQ(socket->Send("abc", 3), 0);
    EXPECT_EQ(CountOf("send"), 2);
    ExpectRecords({PlainRecord("Sent", 2), RecordWithData("Sent", 2, "6162"),
                   PlainRecord("Sent", 0), RecordWithData("Sent", 0, "")});
}

TEST_F(XtTransferSend, WritesWhatTheRoutersAskFor) {
    const auto socket = MakeAddressedXt();
    ExpectRecordsOfEachCombination(
        "Sent", [&] { socket->Send("a\x80", 2); }, 2, "61FFFFFF80");
}

TEST_F(XtTransferSend, WithTheRoutersOffNeedsNoMemory) {
    const auto socket = MakeAddressedXt();
    Switch({.error = true, .connection = true});
    On::Send().Passes().Fails(10035);
    const Allocations::Mark mark;
    socket->Send("abc", 3);
    socket->Send("abc", 3);
    EXPECT_EQ(mark.Requests(), 0U);
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(XtTransferSend, WouldBlockIsZeroWithoutALog) {
    const auto socket = MakeAddressedXt();
    const XtFields before = FieldsOf(*socket);
    On::Send().Fails(10035);
    EXPECT_EQ(socket->Send("abc", 3), 0);
    EXPECT_EQ(Transcript(), (Lines{"send(1001, \"abc\", 3, 0)", "WSAGetLastError()"}));
    EXPECT_EQ(FormatterRequests(), 0);
    EXPECT_EQ(FieldsOf(*socket), before);
}

TEST_F(XtTransferSend, EachOtherFailureIsReportedWithBothEndpoints) {
    const auto socket = MakeAddressedXt();
    ExpectEachXtFailure({.failWith = [](int number) { On::Send().Fails(number); },
                         .operation = [&] { socket->Send("abc", 3); },
                         .failure = NotSent,
                         .calls = {"send(1001, \"abc\", 3, 0)", "WSAGetLastError()"},
                         .memory = MemoryOf(*socket)},
                        ErrorNumbersWithout({10035}));
}

TEST_F(XtTransferSend, NumbersThatOnlyLookLikeWouldBlockAreFailures) {
    const auto socket = MakeAddressedXt();
    for (const int number : {11, 65536 + 10035, -10035}) {
        On::Send().Fails(number);
        EXPECT_EQ(Catch([&] { socket->Send("abc", 3); }), NotSent.With(number));
    }
}

TEST_F(XtTransferSend, EmptyTextsLeaveTheColons) {
    const auto socket = MakeXt();
    On::Send().Fails(10057);
    const Caught caught = Catch([&] { socket->Send("abc", 3); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketXtImpl::Send , send on socket failed , ::send , : : : , "
              u"errno = \u2749 Socket is not connected");
    EXPECT_EQ(caught.code, 10057);
    EXPECT_EQ(CountOf("LogMessage"), 1);
}

TEST_F(XtTransferSend, EveryStateGoesToTheSystemAndStays) {
    SwitchPacketTracing(false, false);
    for (const SocketState state : OpenStates) {
        const auto socket = MakeXt(state);
        EXPECT_EQ(socket->Send("abc", 3), 3);
        EXPECT_EQ(FieldsOf(*socket).state, state);
    }
    const auto closed = MakeClosedXt();
    On::Send().Fails(10038);
    EXPECT_EQ(Catch([&] { closed->Send("abc", 3); }).code, 10038);
    EXPECT_EQ(LastEventOf("send").text, "send(INVALID, \"abc\", 3, 0)");
}

TEST_F(XtTransferSend, ExhaustedMemoryInTracingLosesTheRecordAlone) {
    const auto socket = MakeAddressedXt();
    const std::string bytes(100, 'a');
    const std::size_t failed = FailEveryAllocation([&](std::size_t n) {
        int count = 0;
        const Starved starved = Starve(n, [&] { count = socket->Send(bytes.data(), 100); });
        EXPECT_FALSE(starved.outOfMemory) << n;
        EXPECT_EQ(count, 100) << n;
        return starved.happened;
    });
    EXPECT_GE(failed, 2U);
}

TEST_F(XtTransferSend, LogThatFailsLosesTheRecordsAlone) {
    const auto socket = MakeAddressedXt();
    On::LogMessage().Throws(7);
    EXPECT_EQ(socket->Send("abc", 3), 3);
}

TEST_F(XtTransferReceive, MakesOneSystemCallWithoutFlagsThenRecords) {
    const auto socket = MakeAddressedXt();
    const XtFields before = FieldsOf(*socket);
    char buffer[8] = {};
    On::Recv().Delivers("abc");
    EXPECT_EQ(socket->Receive(buffer, 8), 3);
    EXPECT_EQ(FieldsOf(*socket), before);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(SystemCalls(), (Lines{"recv(1001, 8, 0)", "LogMessage", "LogMessage"}));
    EXPECT_EQ(LastEventOf("recv").pointer, buffer);
    ExpectRecords({PlainRecord("Received", 3), RecordWithData("Received", 3, "616263")});
}

TEST_F(XtTransferReceive, PassesEveryLengthOn) {
    SwitchPacketTracing(false, false);
    const auto socket = MakeXt();
    for (const int length : {0, 1, INT_MAX, -1, INT_MIN}) {
        On::Recv().Returns(1);
        EXPECT_EQ(socket->Receive(nullptr, length), 1);
        EXPECT_EQ(LastEventOf("recv").text, "recv(1001, " + std::to_string(length) + ", 0)");
    }
}

TEST_F(XtTransferReceive, WritesWhatTheRoutersAskFor) {
    const auto socket = MakeAddressedXt();
    char buffer[8];
    ExpectRecordsOfEachCombination(
        "Received",
        [&] {
            On::Recv().Delivers("a\xC3");
            socket->Receive(buffer, 8);
        },
        2, "61FFFFFFC3");
}

TEST_F(XtTransferReceive, WithTheRoutersOffNeedsNoMemory) {
    const auto socket = MakeAddressedXt();
    Switch({.error = true, .connection = true});
    On::Recv().Delivers("abc");
    char buffer[8];
    const Allocations::Mark mark;
    socket->Receive(buffer, 8);
    EXPECT_EQ(mark.Requests(), 0U);
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(XtTransferReceive, TheCodeOfTheOrderlyEndIsThatOfNoFailure) {
    const auto socket = MakeXt();
    char buffer[8];
    for (const int number : ReceiveErrors) {
        On::Recv().Fails(number);
        EXPECT_EQ(Catch([&] { socket->Receive(buffer, 8); }).code, number);
    }
    On::Recv().Returns(0);
    EXPECT_EQ(Catch([&] { socket->Receive(buffer, 8); }).code, SOCKET_ERR_UNKNOWN);
}

TEST_F(XtTransferReceive, ClosedConnectionIsToldWithTheLocalTextsAlone) {
    const auto socket = MakeAddressedXt();
    const XtFields before = FieldsOf(*socket);
    char buffer[8];
    On::Recv().Returns(0);
    const Caught caught = Catch([&] { socket->Receive(buffer, 8); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketXtImpl::Receive , ::recv could not be completed because the "
              u"connection has been closed , ::recv , here.example: : 4000 , errno = \uFFFF "
              u"Unknown error");
    EXPECT_EQ(caught.code, -1);
    EXPECT_EQ(caught, ClosedByPeer.With(-1));
    EXPECT_EQ(SystemCalls(), (Lines{"recv(1001, 8, 0)", "LogMessage"}));
    ExpectRecords({ClosedByPeer.RecordWith(-1)});
    EXPECT_EQ(FieldsOf(*socket), before);
}

TEST_F(XtTransferReceive, ClosedConnectionWithoutTextsLeavesTheColon) {
    const auto socket = MakeXt();
    char buffer[8];
    On::Recv().Returns(0);
    EXPECT_EQ(Catch([&] { socket->Receive(buffer, 8); }).text,
              u"VelNet::SocketXtImpl::Receive , ::recv could not be completed because the "
              u"connection has been closed , ::recv , : :  , errno = \uFFFF Unknown error");
}

TEST_F(XtTransferReceive, ClosedConnectionIsToldWhateverTheRouters) {
    const auto socket = MakeAddressedXt();
    char buffer[8];
    for (const Routers& routers : AllCombinationsOfRouters()) {
        Switch(routers);
        ClearTranscript();
        On::Recv().Returns(0);
        EXPECT_EQ(Catch([&] { socket->Receive(buffer, 8); }), ClosedByPeer.With(-1));
        EXPECT_EQ(CountOf("LogMessage"), routers.error ? 1 : 0);
        EXPECT_EQ(CountOf("WSAGetLastError"), 0);
    }
}

TEST_F(XtTransferReceive, EachFailureIsReportedWithBothEndpoints) {
    const auto socket = MakeAddressedXt();
    char buffer[8];
    ExpectEachXtFailure({
        .failWith = [](int number) { On::Recv().Fails(number); },
        .operation = [&] { socket->Receive(buffer, 8); },
        .failure = NotReceived,
        .calls = {"recv(1001, 8, 0)", "WSAGetLastError()"},
        .memory = MemoryOf(*socket),
    });
}

TEST_F(XtTransferReceive, NothingWaitingIsAFailure) {
    const auto socket = MakeAddressedXt();
    char buffer[8];
    On::Recv().Fails(10035);
    const Caught caught = Catch([&] { socket->Receive(buffer, 8); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketXtImpl::Receive , recieve on socket failed , ::recv , "
              u"here.example:4000 : there.example:http , errno = \u2733 Resource temporarily "
              u"unavailable");
    EXPECT_EQ(caught.code, 10035);
}

TEST_F(XtTransferReceive, EveryStateGoesToTheSystemAndStays) {
    SwitchPacketTracing(false, false);
    char buffer[8];
    for (const SocketState state : OpenStates) {
        const auto socket = MakeXt(state);
        On::Recv().Delivers("abc");
        EXPECT_EQ(socket->Receive(buffer, 8), 3);
        EXPECT_EQ(FieldsOf(*socket).state, state);
    }
    const auto closed = MakeClosedXt();
    On::Recv().Fails(10038);
    EXPECT_EQ(Catch([&] { closed->Receive(buffer, 8); }).code, 10038);
    EXPECT_EQ(LastEventOf("recv").text, "recv(INVALID, 8, 0)");
}

TEST_F(XtTransferReceive, ExhaustedMemoryInTracingLosesTheRecordAlone) {
    const auto socket = MakeAddressedXt();
    char buffer[8];
    const std::size_t failed = FailEveryAllocation([&](std::size_t n) {
        int count = 0;
        On::Recv().Delivers("abcdefgh");
        const Starved starved = Starve(n, [&] { count = socket->Receive(buffer, 8); });
        EXPECT_FALSE(starved.outOfMemory) << n;
        EXPECT_EQ(count, 8) << n;
        return starved.happened;
    });
    EXPECT_GE(failed, 2U);
}

TEST_F(XtTransferReceive, ExhaustedMemoryWhileTheFailureIsToldIsBadAlloc) {
    const auto socket = MakeAddressedXt();
    char buffer[8];
    const auto exhaust = [&](const std::function<void()>& script) {
        return ExhaustMemory(
            script, [&] { socket->Receive(buffer, 8); },
            [](const Starved& starved) { EXPECT_EQ(starved.outOfMemory, starved.happened); });
    };
    EXPECT_GE(exhaust([] { On::Recv().Fails(10054); }), 1U);
    EXPECT_GE(exhaust([] { On::Recv().Returns(0); }), 1U);
}

}  // namespace
}  // namespace SocketTests

// Socket::Receive.
#include <algorithm>
#include <climits>

#include "ReceiveErrors.h"
#include "SocketTrials.h"

namespace SocketTests {
namespace {

constexpr char ReceiveFailure[] = "VelNet::SocketImpl::Receive() - FAIL. The ::recv failed";
constexpr char16_t EndOfStream[] =
    u"VelNet::SocketImpl::Receive() - FAIL. The "
    u"::recv could not be completed because the "
    u"connection has been closed.";

class Receive : public SocketTest {
protected:
    int ReceiveInto(Socket& socket) { return socket.Receive(buffer_, sizeof buffer_); }

    char buffer_[16] = {};
};

TEST_F(Receive, MakesOneSystemCallWithoutFlags) {
    SwitchPacketTracing(false, false);
    const auto socket = MakeConnectedSocket();
    On::Recv().Delivers("abc");
    EXPECT_EQ(ReceiveInto(*socket), 3);
    EXPECT_EQ(Transcript(), Lines{"recv(1001, 16, 0)"});
    EXPECT_STREQ(buffer_, "abc");
}

TEST_F(Receive, PassesTheCallersBuffer) {
    const auto socket = MakeConnectedSocket();
    On::Recv().Delivers("abc");
    ReceiveInto(*socket);
    EXPECT_EQ(LastEventOf("recv").pointer, buffer_);
}

TEST_F(Receive, PassesEveryLengthOn) {
    SwitchPacketTracing(false, false);
    const auto socket = MakeConnectedSocket();
    for (const int length : {0, 1, INT_MAX, -1, INT_MIN}) {
        SCOPED_TRACE(length);
        ClearTranscript();
        On::Recv().Returns(1);
        EXPECT_EQ(socket->Receive(nullptr, length), 1);
        EXPECT_EQ(Transcript(), Lines{"recv(1001, " + std::to_string(length) + ", 0)"});
    }
}

TEST_F(Receive, ReturnsTheSystemsCount) {
    SwitchPacketTracing(false, false);
    const auto socket = MakeConnectedSocket();
    for (const int count : {1, 15, 16, INT_MAX}) {
        SCOPED_TRACE(count);
        On::Recv().Returns(count);
        EXPECT_EQ(ReceiveInto(*socket), count);
    }
    EXPECT_EQ(CountOf("recv"), 4);
}

TEST_F(Receive, CostsNoMemoryAndNoFormatterWithoutTracing) {
    SwitchPacketTracing(false, false);
    const auto socket = MakeConnectedSocket();
    On::Recv().Delivers("abc");
    const Allocations::Mark mark;
    ReceiveInto(*socket);
    EXPECT_EQ(mark.Requests(), 0U);
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(Receive, WorksWhileTheLayerIsDown) {
    const auto socket = MakeConnectedSocket();
    BringLayerDown();
    ClearTranscript();
    On::Recv().Delivers("abc").Returns(0);
    EXPECT_EQ(ReceiveInto(*socket), 3);
    EXPECT_EQ(Catch([&] { ReceiveInto(*socket); }), (Caught{true, EndOfStream, -1}));
    EXPECT_EQ(Transcript(), (Lines{"recv(1001, 16, 0)", "recv(1001, 16, 0)"}));
}

TEST_F(Receive, WritesThePlainRecordThenTheOneWithData) {
    const auto socket = MakeConnectedSocket();
    On::Recv().Delivers("A\r\n");
    EXPECT_EQ(ReceiveInto(*socket), 3);
    EXPECT_EQ(Transcript(), (Lines{"recv(1001, 16, 0)",
                                   "LogMessage(Packet Trace, \"Received 3 bytes, Local "
                                   "address: 10.1.2.3 "
                                   "(50123), Remote address: 10.1.2.9 (80)\")",
                                   "LogMessage(Verbose Packet Trace, \"Received 3 bytes, Local "
                                   "address: 10.1.2.3 "
                                   "(50123), Remote address: 10.1.2.9 (80), data: 410D0A\")"}));
    ExpectRecords({TransferRecord("Received", 3), TransferRecordWithData("Received", 3, "410D0A")});
}

TEST_F(Receive, PlainRecordAlone) {
    SwitchPacketTracing(true, false);
    const auto socket = MakeConnectedSocket();
    On::Recv().Delivers("abc");
    ReceiveInto(*socket);
    ExpectRecords({TransferRecord("Received", 3)});
    EXPECT_EQ(FormatterRequests(), 1);
}

TEST_F(Receive, RecordWithDataAlone) {
    SwitchPacketTracing(false, true);
    const auto socket = MakeConnectedSocket();
    On::Recv().Delivers("abc");
    ReceiveInto(*socket);
    ExpectRecords({TransferRecordWithData("Received", 3, "616263")});
    EXPECT_EQ(FormatterRequests(), 1);
}

TEST_F(Receive, OtherRoutersWriteNothing) {
    SwitchPacketTracing(false, false);
    const auto socket = MakeConnectedSocket();
    On::Recv().Delivers("abc");
    ReceiveInto(*socket);
    ExpectRecords({});
}

TEST_F(Receive, RecordShowsTheBytesReceivedAndNotTheRestOfTheBuffer) {
    const auto socket = MakeConnectedSocket();
    std::fill(std::begin(buffer_), std::end(buffer_), 'x');
    On::Recv().Delivers(std::string("\0\x80", 2));
    EXPECT_EQ(ReceiveInto(*socket), 2);
    ExpectRecords(
        {TransferRecord("Received", 2), TransferRecordWithData("Received", 2, "00FFFFFF80")});
}

TEST_F(Receive, RecordsShowTheStoredAddressesAndAskTheSystemForNone) {
    const auto socket = MakeSocket();
    On::Recv().Delivers("a");
    ReceiveInto(*socket);
    EXPECT_EQ(TranscriptWithRecordsShortened(),
              (Lines{"recv(1001, 16, 0)", "LogMessage", "LogMessage"}));
    EXPECT_EQ(LoggedTexts(PacketCategory),
              std::vector<std::u16string>{u"Received 1 bytes, Local address: 0.0.0.0 "
                                          u"(0), Remote address: 0.0.0.0 (0)"});
}

TEST_F(Receive, PlainRecordCostsTheSameForAnyNumberOfBytes) {
    SwitchPacketTracing(true, false);
    const auto socket = MakeConnectedSocket();
    On::Recv().Delivers("a").Delivers("abcdefghijklmnop");
    const Allocations::Mark few;
    ReceiveInto(*socket);
    const std::size_t bytesForFew = few.Bytes();
    const Allocations::Mark many;
    ReceiveInto(*socket);
    EXPECT_EQ(many.Bytes(), bytesForFew);
}

TEST_F(Receive, TheCodeOfTheOrderlyEndIsThatOfNoFailure) {
    const auto socket = MakeConnectedSocket();
    for (const int number : ReceiveErrors) {
        On::Recv().Fails(number);
        EXPECT_EQ(Catch([&] { ReceiveInto(*socket); }).code, number);
    }
    On::Recv().Returns(0);
    EXPECT_EQ(Catch([&] { ReceiveInto(*socket); }).code, SOCKET_ERR_UNKNOWN);
}

// A call that would block (10035) among them, unlike in Send.
TEST_F(Receive, EachFailureIsReportedAndLeavesTheSocketAsItWas) {
    const auto socket = MakeConnectedSocket();
    ExpectEachFailure({
        .failWith = [](int number) { On::Recv().Fails(number); },
        .operation = [&] { ReceiveInto(*socket); },
        .text = ReceiveFailure,
        .calls = {"recv(1001, 16, 0)", "WSAGetLastError()"},
        .memory = MemoryOf(*socket),
    });
}

TEST_F(Receive, NothingToReceiveOnANonBlockingSocketThrows) {
    const auto socket = MakeConnectedSocket();
    On::Recv().Fails(10035);
    const Caught caught = Catch([&] { ReceiveInto(*socket); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketImpl::Receive() - FAIL. The ::recv "
              u"failed, errno = \u2733 Resource "
              u"temporarily unavailable");
    EXPECT_EQ(caught.code, 10035);
}

TEST_F(Receive, EndOfStreamIsToldWithoutANumberAndLeavesTheSocketOpen) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    SetLastError(10054);
    On::Recv().Returns(0);
    EXPECT_EQ(Catch([&] { ReceiveInto(*socket); }), (Caught{true, EndOfStream, -1}));
    EXPECT_EQ(TranscriptWithRecordsShortened(), (Lines{"recv(1001, 16, 0)", "LogMessage"}));
    ExpectRecords({FailureRecord(EndOfStream)});
    EXPECT_EQ(FieldsOf(*socket), before);
}

TEST_F(Receive, EndOfStreamIsNotLoggedWhileErrorIsOff) {
    SetRouterFlag(ErrorCategory, 0);
    const auto socket = MakeConnectedSocket();
    On::Recv().Returns(0);
    EXPECT_EQ(Catch([&] { ReceiveInto(*socket); }), (Caught{true, EndOfStream, -1}));
    EXPECT_EQ(Transcript(), Lines{"recv(1001, 16, 0)"});
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(Receive, NoBytesForALengthOfZeroThrowAsWell) {
    const auto socket = MakeConnectedSocket();
    On::Recv().Returns(0);
    EXPECT_EQ(Catch([&] { socket->Receive(buffer_, 0); }), (Caught{true, EndOfStream, -1}));
}

TEST_F(Receive, EndOfStreamTextGrowsInRoomMadeBeforehand) {
    const auto socket = MakeConnectedSocket();
    On::Recv().Returns(0);
    const Allocations::Mark mark;
    Catch([&] { ReceiveInto(*socket); });
    EXPECT_EQ(FailureTextBlocksSince(mark), 1);
}

TEST_F(Receive, StateIsNeitherAskedNorChanged) {
    SwitchPacketTracing(false, false);
    for (const SocketState state : OpenStates) {
        SCOPED_TRACE(state);
        const auto socket = MakeSocket(state);
        On::Recv().Delivers("abc").Fails(10057).Returns(0);
        EXPECT_EQ(ReceiveInto(*socket), 3);
        EXPECT_EQ(FieldsOf(*socket).state, state);
        EXPECT_EQ(Catch([&] { ReceiveInto(*socket); }), FailureOf(ReceiveFailure, 10057));
        EXPECT_EQ(FieldsOf(*socket).state, state);
        Catch([&] { ReceiveInto(*socket); });
        EXPECT_EQ(FieldsOf(*socket).state, state);
    }
}

TEST_F(Receive, ClosedSocketGoesToTheSystem) {
    const auto socket = MakeClosedSocket();
    On::Recv().Fails(10038);
    EXPECT_EQ(Catch([&] { ReceiveInto(*socket); }), FailureOf(ReceiveFailure, 10038));
    EXPECT_EQ(TranscriptWithout({"LogMessage"}),
              (Lines{"recv(INVALID, 16, 0)", "WSAGetLastError()"}));
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
}

TEST_F(Receive, ExhaustedMemoryInTracingLosesTheRecordAlone) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    char buffer[64];
    const std::size_t failed = FailEveryAllocation([&](std::size_t n) {
        SCOPED_TRACE(n);
        ClearTranscript();
        On::Recv().Delivers("abcdefghijklmnop");
        int count = 0;
        const Starved starved = Starve(n, [&] { count = socket->Receive(buffer, sizeof buffer); });
        EXPECT_FALSE(starved.outOfMemory);
        EXPECT_EQ(count, 16);
        EXPECT_EQ(CountOf("recv"), 1);
        EXPECT_EQ(CountOf("closesocket"), 0);
        EXPECT_EQ(FieldsOf(*socket), before);
        return starved.happened;
    });
    EXPECT_GT(failed, 1U) << "the text of the bytes";
}

TEST_F(Receive, ExhaustedMemoryWhileTheEndOfStreamIsToldLeavesTheSocketAsItWas) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    std::size_t n = 1;
    for (bool exhausted = true; exhausted; ++n) {
        On::Recv().Returns(0);
        exhausted = RunsOutOfMemory(n, [&] { Catch([&] { ReceiveInto(*socket); }); });
        EXPECT_EQ(FieldsOf(*socket), before);
    }
    EXPECT_GT(n, 2U);
}

}  // namespace
}  // namespace SocketTests

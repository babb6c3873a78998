// Socket::Send.
#include <climits>

#include "SocketTrials.h"

namespace SocketTests {
namespace {

constexpr char SendFailure[] = "VelNet::SocketImpl::Send() - FAIL. The ::send failed";

class Send : public SocketTest {};

TEST_F(Send, MakesOneSystemCallWithoutFlags) {
    SwitchPacketTracing(false, false);
    const auto socket = MakeConnectedSocket();
    EXPECT_EQ(socket->Send("abcdef", 4), 4);
    EXPECT_EQ(Transcript(), Lines{"send(1001, \"abcd\", 4, 0)"});
}

TEST_F(Send, PassesTheCallersBuffer) {
    const auto socket = MakeConnectedSocket();
    const char buffer[] = "abc";
    socket->Send(buffer, 3);
    EXPECT_EQ(LastEventOf("send").pointer, buffer);
}

TEST_F(Send, PassesEveryLengthOn) {
    SwitchPacketTracing(false, false);
    const auto socket = MakeConnectedSocket();
    for (const int length : {0, 1, INT_MAX, -1, INT_MIN}) {
        SCOPED_TRACE(length);
        ClearTranscript();
        On::Send().Returns(0);
        EXPECT_EQ(socket->Send(nullptr, length), 0);
        EXPECT_EQ(Transcript(), Lines{"send(1001, null, " + std::to_string(length) + ", 0)"});
    }
}

TEST_F(Send, ReturnsTheSystemsCountWhateverItIs) {
    SwitchPacketTracing(false, false);
    const auto socket = MakeConnectedSocket();
    for (const int count : {0, 1, 4, 10, 11, INT_MAX, -2, INT_MIN}) {
        SCOPED_TRACE(count);
        ClearTranscript();
        On::Send().Returns(count);
        EXPECT_EQ(socket->Send("0123456789", 10), count);
        EXPECT_EQ(Transcript(), Lines{"send(1001, \"0123456789\", 10, 0)"});
    }
}

TEST_F(Send, CostsNoMemoryAndNoFormatterWithoutTracing) {
    SwitchPacketTracing(false, false);
    const auto socket = MakeConnectedSocket();
    const Allocations::Mark mark;
    socket->Send("abc", 3);
    EXPECT_EQ(mark.Requests(), 0U);
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(Send, WorksWhileTheLayerIsDown) {
    const auto socket = MakeConnectedSocket();
    BringLayerDown();
    ClearTranscript();
    EXPECT_EQ(socket->Send("abc", 3), 3);
    EXPECT_EQ(Transcript(), Lines{"send(1001, \"abc\", 3, 0)"});
}

TEST_F(Send, WritesThePlainRecordThenTheOneWithData) {
    const auto socket = MakeConnectedSocket();
    socket->Send("A\r\n", 3);
    EXPECT_EQ(Transcript(), (Lines{"send(1001, \"A\\x0D\\x0A\", 3, 0)",
                                   "LogMessage(Packet Trace, \"Sent 3 bytes, Local address: "
                                   "10.1.2.3 (50123), "
                                   "Remote address: 10.1.2.9 (80)\")",
                                   "LogMessage(Verbose Packet Trace, \"Sent 3 bytes, Local "
                                   "address: 10.1.2.3 "
                                   "(50123), Remote address: 10.1.2.9 (80), data: 410D0A\")"}));
    ExpectRecords({TransferRecord("Sent", 3), TransferRecordWithData("Sent", 3, "410D0A")});
}

TEST_F(Send, PlainRecordAlone) {
    SwitchPacketTracing(true, false);
    const auto socket = MakeConnectedSocket();
    socket->Send("abc", 3);
    ExpectRecords({TransferRecord("Sent", 3)});
    EXPECT_EQ(FormatterRequests(), 1);
}

TEST_F(Send, RecordWithDataAlone) {
    SwitchPacketTracing(false, true);
    const auto socket = MakeConnectedSocket();
    socket->Send("abc", 3);
    ExpectRecords({TransferRecordWithData("Sent", 3, "616263")});
    EXPECT_EQ(FormatterRequests(), 1);
}

TEST_F(Send, RecordsNeedNoOtherRouter) {
    SetRouterFlag(ErrorCategory, 0);
    const auto socket = MakeConnectedSocket();
    SetRouterFlag(ConnectionCategory, 0);
    socket->Send("a", 1);
    ExpectRecords({TransferRecord("Sent", 1), TransferRecordWithData("Sent", 1, "61")});
}

TEST_F(Send, OtherRoutersWriteNothing) {
    SwitchPacketTracing(false, false);
    const auto socket = MakeConnectedSocket();
    socket->Send("a", 1);
    ExpectRecords({});
}

TEST_F(Send, RecordsShowTheBytesThatWereSent) {
    const auto socket = MakeConnectedSocket();
    On::Send().Returns(4);
    EXPECT_EQ(socket->Send("0123456789", 10), 4);
    ExpectRecords({TransferRecord("Sent", 4), TransferRecordWithData("Sent", 4, "30313233")});
}

TEST_F(Send, RecordOfNoBytesHasEmptyData) {
    const auto socket = MakeConnectedSocket();
    EXPECT_EQ(socket->Send("", 0), 0);
    ExpectRecords({TransferRecord("Sent", 0), TransferRecordWithData("Sent", 0, "")});
}

TEST_F(Send, HighBytesShowEightDigitsAndZeroBytesTwo) {
    SwitchPacketTracing(false, true);
    const auto socket = MakeConnectedSocket();
    socket->Send("\x00\x7F\x80\xC3\xFF", 5);
    ExpectRecords({TransferRecordWithData("Sent", 5, "007FFFFFFF80FFFFFFC3FFFFFFFF")});
}

TEST_F(Send, DataAreShownWithoutLimit) {
    SwitchPacketTracing(false, true);
    const auto socket = MakeConnectedSocket();
    const std::string bytes(20000, 'a');
    socket->Send(bytes.data(), 20000);
    std::string digits;
    for (int index = 0; index < 20000; ++index)
        digits += "61";
    ExpectRecords({TransferRecordWithData("Sent", 20000, digits)});
}

TEST_F(Send, PlainRecordCostsTheSameForAnyNumberOfBytes) {
    SwitchPacketTracing(true, false);
    const auto socket = MakeConnectedSocket();
    const std::string bytes(20000, 'a');
    const Allocations::Mark few;
    socket->Send(bytes.data(), 1);
    const std::size_t bytesForFew = few.Bytes();
    const Allocations::Mark many;
    socket->Send(bytes.data(), 20000);
    EXPECT_EQ(many.Bytes(), bytesForFew);
}

TEST_F(Send, AddressesAreRenderedOnceForBothRecords) {
    const auto socket = MakeConnectedSocket();
    SwitchPacketTracing(false, true);
    const Allocations::Mark one;
    socket->Send("abc", 3);
    const std::size_t requestsForOne = one.Requests();
    SwitchPacketTracing(true, true);
    const Allocations::Mark both;
    socket->Send("abc", 3);
    EXPECT_EQ(both.Requests(), requestsForOne);
}

TEST_F(Send, RecordsShowTheStoredAddressesAndAskTheSystemForNone) {
    const auto socket = MakeSocket();
    socket->Send("a", 1);
    EXPECT_EQ(TranscriptWithRecordsShortened(),
              (Lines{"send(1001, \"a\", 1, 0)", "LogMessage", "LogMessage"}));
    EXPECT_EQ(LoggedTexts(PacketCategory),
              std::vector<std::u16string>{u"Sent 1 bytes, Local address: 0.0.0.0 "
                                          u"(0), Remote address: 0.0.0.0 (0)"});
}

TEST_F(Send, WouldBlockIsZeroWithoutALog) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    On::Send().Fails(10035);
    EXPECT_EQ(socket->Send("abc", 3), 0);
    EXPECT_EQ(Transcript(), (Lines{"send(1001, \"abc\", 3, 0)", "WSAGetLastError()"}));
    EXPECT_EQ(FormatterRequests(), 0);
    EXPECT_EQ(FieldsOf(*socket), before);
}

TEST_F(Send, EachOtherFailureIsReportedAndLeavesTheSocketAsItWas) {
    const auto socket = MakeConnectedSocket();
    ExpectEachFailure({
                          .failWith = [](int number) { On::Send().Fails(number); },
                          .operation = [&] { socket->Send("abc", 3); },
                          .text = SendFailure,
                          .calls = {"send(1001, \"abc\", 3, 0)", "WSAGetLastError()"},
                          .memory = MemoryOf(*socket),
                      },
                      ErrorNumbersWithout({10035}));
}

// Only Accept knows the other systems' number.
TEST_F(Send, NumbersThatOnlyLookLikeWouldBlockAreFailures) {
    const auto socket = MakeConnectedSocket();
    for (const int number : {11, 65536 + 10035, -10035}) {
        SCOPED_TRACE(number);
        On::Send().Fails(number);
        EXPECT_EQ(Catch([&] { socket->Send("abc", 3); }), FailureOf(SendFailure, number));
    }
}

TEST_F(Send, ResetPeerIsToldWithTheNumberAsOneUnit) {
    const auto socket = MakeConnectedSocket();
    On::Send().Fails(10054);
    const Caught caught = Catch([&] { socket->Send("abc", 3); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketImpl::Send() - FAIL. The ::send "
              u"failed, errno = \u2746 Connection "
              u"reset by peer");
    EXPECT_EQ(caught.code, 10054);
}

TEST_F(Send, StateIsNeitherAskedNorChanged) {
    SwitchPacketTracing(false, false);
    for (const SocketState state : OpenStates) {
        SCOPED_TRACE(state);
        const auto socket = MakeSocket(state);
        EXPECT_EQ(socket->Send("abc", 3), 3);
        EXPECT_EQ(FieldsOf(*socket).state, state);
        On::Send().Fails(10057);
        EXPECT_EQ(Catch([&] { socket->Send("abc", 3); }), FailureOf(SendFailure, 10057));
        EXPECT_EQ(FieldsOf(*socket).state, state);
    }
}

TEST_F(Send, ClosedSocketGoesToTheSystem) {
    const auto socket = MakeClosedSocket();
    On::Send().Fails(10038);
    EXPECT_EQ(Catch([&] { socket->Send("abc", 3); }), FailureOf(SendFailure, 10038));
    EXPECT_EQ(TranscriptWithout({"LogMessage"}),
              (Lines{"send(INVALID, \"abc\", 3, 0)", "WSAGetLastError()"}));
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
}

TEST_F(Send, ExhaustedMemoryInTracingLosesTheRecordAlone) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    const std::string bytes(100, 'a');
    const std::size_t failed = FailEveryAllocation([&](std::size_t n) {
        SCOPED_TRACE(n);
        ClearTranscript();
        int count = 0;
        const Starved starved = Starve(n, [&] { count = socket->Send(bytes.data(), 100); });
        EXPECT_FALSE(starved.outOfMemory);
        EXPECT_EQ(count, 100);
        EXPECT_EQ(CountOf("send"), 1);
        EXPECT_EQ(CountOf("closesocket"), 0);
        EXPECT_EQ(FieldsOf(*socket), before);
        return starved.happened;
    });
    EXPECT_GT(failed, 1U) << "the text of the bytes";
}

TEST_F(Send, ExhaustedMemoryWhileTheFailureIsToldLeavesTheSocketAsItWas) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    std::size_t n = 1;
    for (bool exhausted = true; exhausted; ++n) {
        On::Send().Fails(10054);
        exhausted = RunsOutOfMemory(n, [&] { Catch([&] { socket->Send("abc", 3); }); });
        EXPECT_EQ(FieldsOf(*socket), before);
    }
    EXPECT_GT(n, 2U);
}

}  // namespace
}  // namespace SocketTests

// Socket::Connect.
#include "SocketTrials.h"

namespace SocketTests {
namespace {

constexpr char ConnectFailure[] =
    "VelNet::SocketImpl::Connect() - FAIL. "
    "Cannot connect to a socket: 10.0.0.1:80";

class Connect : public SocketTest {
protected:
    static void ConnectTo(SocketImpl& socket) { socket.Connect(Octets(10, 0, 0, 1), 80); }
};

class SocketWithAddressesOfItsOwn : public SocketImpl {
public:
    using SocketImpl::SocketImpl;
    SocketAddress GetLocalAddress() const override { return {Octets(1, 1, 1, 1), 11}; }
    SocketAddress GetRemoteAddress() const override { return {Octets(2, 2, 2, 2), 22}; }
};

TEST_F(Connect, AddressIsFamilyPortInNetworkOrderOctetsAndEightZeroBytes) {
    const auto socket = MakeSocket();
    socket->Connect(Octets(192, 168, 3, 254), 0xABCD);
    EXPECT_EQ(LastEventOf("connect").bytes,
              std::string("\x02\x00\xAB\xCD\xC0\xA8\x03\xFE\0\0\0\0\0\0\0\0", 16));
}

TEST_F(Connect, LearnsLocalThenRemoteAddressThenWritesTheRecord) {
    const auto socket = MakeSocket();
    On::Getsockname().Returns("10.1.2.3", 50123);
    On::Getpeername().Returns("10.1.2.9", 80);
    ConnectTo(*socket);
    EXPECT_EQ(Transcript(), (Lines{"connect(1001, 10.0.0.1:80, 16)", "getsockname(1001, 16)",
                                   "getpeername(1001, 16)",
                                   "LogMessage(Connection Trace, \"Connected, Local address: "
                                   "10.1.2.3 (50123), "
                                   "Remote address: 10.1.2.9 (80)\")"}));
    ExpectRecords({ConnectionRecord("Connected", "10.1.2.3", 50123, "10.1.2.9", 80)});
}

TEST_F(Connect, StoresWhatTheSystemTellsAndNotTheArgument) {
    const auto socket = MakeSocket();
    On::Getsockname().Returns("10.1.2.3", 50123);
    On::Getpeername().Returns("172.16.0.255", 65535);
    ConnectTo(*socket);
    EXPECT_EQ(FieldsOf(*socket),
              (SocketFields{1001, STATE_CONNECTED, "10.1.2.3:50123", "172.16.0.255:65535"}));
}

TEST_F(Connect, SocketIsConnectedBeforeItsAddressesAreAsked) {
    const auto socket = MakeSocket();
    SocketFields atLocal = {};
    SocketFields atRemote = {};
    Observe("getsockname", [&](const Event&) { atLocal = FieldsOf(*socket); });
    Observe("getpeername", [&](const Event&) { atRemote = FieldsOf(*socket); });
    On::Getsockname().Returns("10.1.2.3", 50123);
    ConnectTo(*socket);
    EXPECT_EQ(atLocal, (SocketFields{1001, STATE_CONNECTED, "0.0.0.0:0", "0.0.0.0:0"}));
    EXPECT_EQ(atRemote, (SocketFields{1001, STATE_CONNECTED, "10.1.2.3:50123", "0.0.0.0:0"}));
}

TEST_F(Connect, AsksForTheAddressesThroughTheInterface) {
    const auto socket = MakeSocket<SocketWithAddressesOfItsOwn>();
    ConnectTo(*socket);
    EXPECT_EQ(TranscriptWithout({"LogMessage"}), Lines{"connect(1001, 10.0.0.1:80, 16)"});
    EXPECT_EQ(FieldsOf(*socket), (SocketFields{1001, STATE_CONNECTED, "1.1.1.1:11", "2.2.2.2:22"}));
    ExpectRecords({ConnectionRecord("Connected", "1.1.1.1", 11, "2.2.2.2", 22)});
}

TEST_F(Connect, SocketIsConnectedFromEveryState) {
    for (const SocketState state : OpenStates) {
        SCOPED_TRACE(state);
        const auto socket = MakeSocket(state);
        ConnectTo(*socket);
        EXPECT_EQ(FieldsOf(*socket).state, STATE_CONNECTED);
        EXPECT_EQ(CountOf("connect"), 1);
    }
}

TEST_F(Connect, WritesNothingWhileConnectionTraceIsOff) {
    SetRouterFlag(ConnectionCategory, 0);
    const auto socket = MakeSocket();
    ConnectTo(*socket);
    EXPECT_EQ(Transcript(), (Lines{"connect(1001, 10.0.0.1:80, 16)", "getsockname(1001, 16)",
                                   "getpeername(1001, 16)"}));
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(Connect, RecordNeedsNoOtherRouter) {
    for (const char* const category : {ErrorCategory, PacketCategory, VerboseCategory})
        SetRouterFlag(category, 0);
    const auto socket = MakeSocket();
    ConnectTo(*socket);
    ExpectRecords({ConnectionRecord("Connected", "0.0.0.0", 0, "0.0.0.0", 0)});
}

TEST_F(Connect, WorksWhileTheLayerIsDown) {
    const auto socket = MakeSocket();
    BringLayerDown();
    ClearTranscript();
    ConnectTo(*socket);
    EXPECT_EQ(Transcript(), (Lines{"connect(1001, 10.0.0.1:80, 16)", "getsockname(1001, 16)",
                                   "getpeername(1001, 16)"}));
}

TEST_F(Connect, EachFailureIsReportedAndLeavesTheSocketAsItWas) {
    const auto socket = MakeConnectedSocket();
    ExpectEachFailure({
        .failWith = [](int number) { On::Connect().Fails(number); },
        .operation = [&] { ConnectTo(*socket); },
        .text = ConnectFailure,
        .calls = {"connect(1001, 10.0.0.1:80, 16)", "WSAGetLastError()"},
        .memory = MemoryOf(*socket),
    });
}

TEST_F(Connect, FailureKeepsEveryState) {
    for (const SocketState state : OpenStates) {
        SCOPED_TRACE(state);
        const auto socket = MakeSocket(state);
        On::Connect().Fails(10061);
        Catch([&] { ConnectTo(*socket); });
        EXPECT_EQ(FieldsOf(*socket).state, state);
    }
}

TEST_F(Connect, ClosedSocketGoesToTheSystem) {
    const auto socket = MakeClosedSocket();
    On::Connect().Fails(10038);
    EXPECT_EQ(Catch([&] { ConnectTo(*socket); }), FailureOf(ConnectFailure, 10038));
    EXPECT_EQ(TranscriptWithout({"LogMessage"}),
              (Lines{"connect(INVALID, 10.0.0.1:80, 16)", "WSAGetLastError()"}));
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
}

TEST_F(Connect, RefusedPeerIsToldWithColonAlone) {
    const auto socket = MakeSocket();
    On::Connect().Fails(10061);
    const Caught caught = Catch([&] { ConnectTo(*socket); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketImpl::Connect() - FAIL. Cannot "
              u"connect to a socket: 10.0.0.1:80, "
              u"errno = \u274D Connection refused");
    EXPECT_EQ(caught.code, 10061);
}

TEST_F(Connect, ConnectionNotMadeAtOnceIsAFailure) {
    const auto socket = MakeSocket();
    On::Connect().Fails(10035);
    const Caught caught = Catch([&] { ConnectTo(*socket); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketImpl::Connect() - FAIL. Cannot "
              u"connect to a socket: 10.0.0.1:80, "
              u"errno = \u2733 Resource temporarily unavailable");
    EXPECT_EQ(caught.code, 10035);
    ExpectRecords({FailureRecord(caught.text)});
    EXPECT_EQ(FieldsOf(*socket).state, STATE_CREATED);
}

TEST_F(Connect, NumberWithoutLowBitsEndsTheText) {
    const auto socket = MakeSocket();
    On::Connect().Fails(65536);
    const Caught caught = Catch([&] { ConnectTo(*socket); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketImpl::Connect() - FAIL. Cannot "
              u"connect to a socket: 10.0.0.1:80, "
              u"errno = ");
    EXPECT_EQ(caught.code, -1);
}

TEST_F(Connect, TextShowsTheSmallestAndTheLargestEndpoint) {
    const auto socket = MakeSocket();
    On::Connect().Fails(10049).Fails(10049);
    EXPECT_EQ(Catch([&] { socket->Connect(Octets(), 0); }),
              FailureOf("VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: "
                        "0.0.0.0:0",
                        10049));
    EXPECT_EQ(Catch([&] { socket->Connect(Octets(255, 255, 255, 255), 65535); }),
              FailureOf("VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: "
                        "255.255.255.255:65535",
                        10049));
}

// One block holds the text from its first unit on.
TEST_F(Connect, FailureTextGrowsInRoomMadeBeforehand) {
    const auto socket = MakeSocket();
    On::Connect().Fails(10061);
    const Allocations::Mark mark;
    Catch([&] { ConnectTo(*socket); });
    EXPECT_EQ(FailureTextBlocksSince(mark), 1);
}

// With the label of Send, whichever address was asked for.
TEST_F(Connect, EachFailureToTellTheLocalAddressIsReported) {
    const auto socket = MakeConnectedSocket();
    ExpectEachFailure({
        .failWith = [](int number) { On::Getsockname().Fails(number); },
        .operation = [&] { ConnectTo(*socket); },
        .text = "VelNet::SocketImpl::Send() - FAIL. The ::getsockname failed",
        .calls = {"connect(1001, 10.0.0.1:80, 16)", "getsockname(1001, 16)", "WSAGetLastError()"},
        .memory = MemoryOf(*socket),
    });
}

TEST_F(Connect, EachFailureToTellTheRemoteAddressIsReported) {
    const auto socket = MakeConnectedSocket();
    ExpectEachFailure({
        .failWith =
            [](int number) {
                On::Getsockname().Returns(LocalHost, LocalPort);
                On::Getpeername().Fails(number);
            },
        .operation = [&] { ConnectTo(*socket); },
        .text = "VelNet::SocketImpl::Send() - FAIL. The ::getpeername failed",
        .calls = {"connect(1001, 10.0.0.1:80, 16)", "getsockname(1001, 16)",
                  "getpeername(1001, 16)", "WSAGetLastError()"},
        .memory = MemoryOf(*socket),
    });
}

TEST_F(Connect, SocketWithoutKnownLocalAddressStaysConnectedWithNothingStored) {
    const auto socket = MakeSocket();
    On::Getsockname().Fails(10055);
    Catch([&] { ConnectTo(*socket); });
    EXPECT_EQ(FieldsOf(*socket), (SocketFields{1001, STATE_CONNECTED, "0.0.0.0:0", "0.0.0.0:0"}));
}

TEST_F(Connect, SocketWithoutKnownRemoteAddressStaysConnectedWithTheLocalOneStored) {
    const auto socket = MakeSocket();
    On::Getsockname().Returns("10.1.2.3", 50123);
    On::Getpeername().Fails(10057);
    Catch([&] { ConnectTo(*socket); });
    EXPECT_EQ(FieldsOf(*socket),
              (SocketFields{1001, STATE_CONNECTED, "10.1.2.3:50123", "0.0.0.0:0"}));
}

// The addresses go to where they are stored. The argument is the caller's.
TEST_F(Connect, TakesNoMemoryButItsArgument) {
    const auto socket = MakeSocket();
    SetRouterFlag(ConnectionCategory, 0);
    const Octets address(10, 0, 0, 1);
    const Allocations::Mark mark;
    socket->Connect(address, 80);
    EXPECT_EQ(mark.Requests(), 1U);
}

TEST_F(Connect, ExhaustedMemoryLeavesAConnectedSocketThatClosesOnce) {
    const Octets address(10, 0, 0, 1);
    const std::size_t failed = FailEveryAllocation([&](std::size_t n) {
        SCOPED_TRACE(n);
        auto socket = MakeSocket();
        const SocketFields before = FieldsOf(*socket);
        const Starved starved = Starve(n, [&] { socket->Connect(address, 80); });
        EXPECT_EQ(
            FieldsOf(*socket),
            (SocketFields{before.handle, CountOf("connect") == 0 ? before.state : STATE_CONNECTED,
                          before.local, before.remote}));
        EXPECT_EQ(CountOf("closesocket"), 0);
        socket = {};
        EXPECT_EQ(CountOf("closesocket"), 1);
        return starved.happened;
    });
    EXPECT_EQ(failed, 1U) << "the argument";
}

TEST_F(Connect, ExhaustedMemoryWhileTheFailureIsToldLeavesTheSocketAsItWas) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    // The first request is the address that the operation takes.
    std::size_t n = 2;
    for (bool exhausted = true; exhausted; ++n) {
        On::Connect().Fails(10061);
        exhausted = RunsOutOfMemory(n, [&] { Catch([&] { ConnectTo(*socket); }); });
        EXPECT_EQ(FieldsOf(*socket), before);
    }
    EXPECT_GT(n, 4U);
}

TEST_F(Connect, LogThatFailsLosesTheRecordAlone) {
    const auto socket = MakeSocket();
    On::Getsockname().Returns("10.1.2.3", 50123);
    On::LogMessage().Throws(std::bad_alloc());
    EXPECT_NO_THROW(ConnectTo(*socket));
    EXPECT_EQ(FieldsOf(*socket),
              (SocketFields{1001, STATE_CONNECTED, "10.1.2.3:50123", "0.0.0.0:0"}));
}

}  // namespace
}  // namespace SocketTests

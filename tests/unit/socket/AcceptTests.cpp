// Socket::Accept.
#include "SocketTrials.h"

namespace SocketTests {
namespace {

constexpr char AcceptFailure[] = "VelNet::SocketAPI::Accept() - FAIL. Cannot accept a connection";

class Accept : public SocketTest {
protected:
    static const SocketImpl& ImplementationOf(const VelBase::ReturnPtrI<Socket>& socket) {
        return dynamic_cast<const SocketImpl&>(*socket);
    }

    // What a caller has in the variable before the call.
    static SocketAddress EarlierRemote() { return {Octets(9, 8, 7, 6), 54}; }

    SocketAddress remote_ = EarlierRemote();
};

class ListenerWithAnAddressOfItsOwn : public SocketImpl {
public:
    using SocketImpl::SocketImpl;
    SocketAddress GetLocalAddress() const override { return {Octets(1, 1, 1, 1), 11}; }
    SocketAddress GetRemoteAddress() const override { return {Octets(2, 2, 2, 2), 22}; }
};

TEST_F(Accept, AsksTheListenerForItsOwnAddressAndWritesTheRecord) {
    const auto listener = MakeSocket(STATE_LISTENING);
    On::Accept().Returns(2001, "10.0.0.9", 40000);
    On::Getsockname().Returns("10.0.0.1", 8080);
    const auto accepted = listener->Accept(remote_);
    EXPECT_EQ(Transcript(), (Lines{"accept(1001, 16)", "getsockname(1001, 16)",
                                   "LogMessage(Connection Trace, \"Connected, "
                                   "Local address: 10.0.0.1 (8080), "
                                   "Remote address: 10.0.0.9 (40000)\")"}));
    ExpectRecords({ConnectionRecord("Connected", "10.0.0.1", 8080, "10.0.0.9", 40000)});
}

TEST_F(Accept, NewSocketIsConnectedWithBothAddressesStored) {
    const auto listener = MakeSocket(STATE_LISTENING);
    On::Accept().Returns(2001, "10.0.0.9", 40000);
    On::Getsockname().Returns("10.0.0.1", 8080);
    const auto accepted = listener->Accept(remote_);
    EXPECT_EQ(FieldsOf(ImplementationOf(accepted)),
              (SocketFields{2001, STATE_CONNECTED, "10.0.0.1:8080", "10.0.0.9:40000"}));
    EXPECT_EQ(EndpointText(remote_), "10.0.0.9:40000");
}

TEST_F(Accept, RemoteAddressIsReadByteByByte) {
    const auto listener = MakeSocket(STATE_LISTENING);
    On::Accept().ReturnsRaw(
        2001, std::string("\x02\x00\x12\x34\xFE\x80\x01\x7F\xAA\xAA\xAA\xAA\xAA\xAA\xAA\xAA", 16));
    const auto accepted = listener->Accept(remote_);
    EXPECT_EQ(EndpointText(remote_), "254.128.1.127:4660");
}

TEST_F(Accept, ListenerOnAllAddressesGivesItsWildcardToTheNewSocket) {
    const auto listener = MakeSocket(STATE_LISTENING);
    On::Accept().Returns(2001, "10.0.0.9", 40000);
    On::Getsockname().Returns("0.0.0.0", 8080);
    const auto accepted = listener->Accept(remote_);
    EXPECT_EQ(FieldsOf(ImplementationOf(accepted)).local, "0.0.0.0:8080");
}

TEST_F(Accept, ResultHoldsTheOnlyReference) {
    const auto listener = MakeSocket(STATE_LISTENING);
    On::Accept().Returns(2001, "10.0.0.9", 40000);
    const auto accepted = listener->Accept(remote_);
    EXPECT_EQ(ImplementationOf(accepted).GetReferenceCount(), 1);
}

TEST_F(Accept, NewSocketOwnsItsHandle) {
    const auto listener = MakeSocket(STATE_LISTENING);
    On::Accept().Returns(2001, "10.0.0.9", 40000);
    On::Getsockname().Returns("10.0.0.1", 8080);
    auto accepted = listener->Accept(remote_);
    EXPECT_EQ(CountOf("closesocket"), 0);
    ClearTranscript();
    accepted = {};
    EXPECT_EQ(TranscriptWithRecordsShortened(), (Lines{"closesocket(2001)", "LogMessage"}));
    ExpectRecords({ConnectionRecord("Connected", "10.0.0.1", 8080, "10.0.0.9", 40000),
                   ConnectionRecord("Disconnected", "10.0.0.1", 8080, "10.0.0.9", 40000)});
}

TEST_F(Accept, RemoteIsAssignedBeforeTheListenersAddressIsAsked) {
    const auto listener = MakeSocket(STATE_LISTENING);
    On::Accept().Returns(2001, "10.0.0.9", 40000);
    std::string remoteAtQuery;
    Observe("getsockname", [&](const Event&) { remoteAtQuery = EndpointText(remote_); });
    const auto accepted = listener->Accept(remote_);
    EXPECT_EQ(remoteAtQuery, "10.0.0.9:40000");
}

TEST_F(Accept, AsksForTheListenersAddressThroughTheInterface) {
    const auto listener = MakeSocket<ListenerWithAnAddressOfItsOwn>(STATE_LISTENING);
    On::Accept().Returns(2001, "10.0.0.9", 40000);
    const auto accepted = listener->Accept(remote_);
    EXPECT_EQ(TranscriptWithRecordsShortened(), (Lines{"accept(1001, 16)", "LogMessage"}));
    EXPECT_EQ(FieldsOf(ImplementationOf(accepted)),
              (SocketFields{2001, STATE_CONNECTED, "1.1.1.1:11", "10.0.0.9:40000"}));
}

TEST_F(Accept, ListenerStaysAsItIsInEveryState) {
    for (const SocketState state : OpenStates) {
        SCOPED_TRACE(state);
        const auto listener = MakeSocket(state);
        const auto accepted = listener->Accept(remote_);
        EXPECT_EQ(FieldsOf(*listener),
                  (SocketFields{listener->Handle(), state, "0.0.0.0:0", "0.0.0.0:0"}));
        EXPECT_EQ(FieldsOf(ImplementationOf(accepted)).state, STATE_CONNECTED);
    }
}

TEST_F(Accept, ListenersStoredAddressesAreNotTouched) {
    const auto listener = MakeConnectedSocket();
    On::Getsockname().Returns("10.0.0.1", 8080);
    const auto accepted = listener->Accept(remote_);
    EXPECT_EQ(FieldsOf(*listener),
              (SocketFields{1001, STATE_CONNECTED, "10.1.2.3:50123", "10.1.2.9:80"}));
}

TEST_F(Accept, EachCallGivesASocketOfItsOwn) {
    const auto listener = MakeSocket(STATE_LISTENING);
    On::Accept().Returns(2001, "10.0.0.8", 1).Returns(2002, "10.0.0.9", 2);
    const auto first = listener->Accept(remote_);
    const auto second = listener->Accept(remote_);
    EXPECT_FALSE(first->IsSameSocket(*second));
    EXPECT_EQ(FieldsOf(ImplementationOf(first)).remote, "10.0.0.8:1");
    EXPECT_EQ(FieldsOf(ImplementationOf(second)).remote, "10.0.0.9:2");
}

TEST_F(Accept, WritesNothingWhileConnectionTraceIsOff) {
    SetRouterFlag(ConnectionCategory, 0);
    const auto listener = MakeSocket(STATE_LISTENING);
    const auto accepted = listener->Accept(remote_);
    EXPECT_EQ(Transcript(), (Lines{"accept(1001, 16)", "getsockname(1001, 16)"}));
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(Accept, RecordNeedsNoOtherRouter) {
    for (const char* const category : {ErrorCategory, PacketCategory, VerboseCategory})
        SetRouterFlag(category, 0);
    const auto listener = MakeSocket(STATE_LISTENING);
    const auto accepted = listener->Accept(remote_);
    ExpectRecords({ConnectionRecord("Connected", "0.0.0.0", 0, "0.0.0.0", 0)});
}

// 11 is what other systems' sockets call the same.
TEST_F(Accept, NothingPendingIsAnEmptyResultWithoutALog) {
    for (const int number : {10035, 11}) {
        SCOPED_TRACE(number);
        const auto listener = MakeConnectedSocket();
        const SocketFields before = FieldsOf(*listener);
        On::Accept().Fails(number);
        EXPECT_FALSE(listener->Accept(remote_));
        EXPECT_EQ(CountOf("accept"), 1);
        EXPECT_EQ(CountOf("WSAGetLastError"), 1);
        EXPECT_EQ(Events().size(), 2U);
        EXPECT_EQ(EndpointText(remote_), "9.8.7.6:54");
        EXPECT_EQ(FieldsOf(*listener), before);
        EXPECT_EQ(FormatterRequests(), 0);
        SetRouterFlag(ConnectionCategory, 0);
    }
}

TEST_F(Accept, EachOtherFailureIsReportedAndChangesNothing) {
    const auto listener = MakeConnectedSocket();
    ExpectEachFailure(
        {
            .failWith = [](int number) { On::Accept().Fails(number); },
            .operation = [&] { listener->Accept(remote_); },
            .text = AcceptFailure,
            .calls = {"accept(1001, 16)", "WSAGetLastError()"},
            .memory = [&] { return MemoryOf(*listener)() + ' ' + EndpointText(remote_); },
        },
        ErrorNumbersWithout({10035, 11}));
}

TEST_F(Accept, NumbersThatOnlyLookLikeWouldBlockAreFailures) {
    const auto listener = MakeSocket(STATE_LISTENING);
    for (const int number : {65536 + 10035, 65536 + 11, -11, -10035}) {
        SCOPED_TRACE(number);
        On::Accept().Fails(number);
        EXPECT_EQ(Catch([&] { listener->Accept(remote_); }), FailureOf(AcceptFailure, number));
    }
}

TEST_F(Accept, FailureIsToldUnderTheNameOfTheSocketLayer) {
    const auto listener = MakeSocket(STATE_LISTENING);
    On::Accept().Fails(10024);
    const Caught caught = Catch([&] { listener->Accept(remote_); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketAPI::Accept() - FAIL. Cannot accept a "
              u"connection, errno = \u2728 Too "
              u"many open files");
    EXPECT_EQ(caught.code, 10024);
}

TEST_F(Accept, ClosedSocketGoesToTheSystem) {
    const auto listener = MakeClosedSocket();
    On::Accept().Fails(10038);
    EXPECT_EQ(Catch([&] { listener->Accept(remote_); }), FailureOf(AcceptFailure, 10038));
    EXPECT_EQ(TranscriptWithout({"LogMessage"}),
              (Lines{"accept(INVALID, 16)", "WSAGetLastError()"}));
}

TEST_F(Accept, EachFailureToTellTheListenersAddressClosesTheNewSocketOnce) {
    const auto listener = MakeSocket(STATE_LISTENING);
    SetRouterFlag(ConnectionCategory, 0);
    remote_ = SocketAddress(Octets(10, 0, 0, 9), 40000);
    ExpectEachFailure({
        .failWith =
            [](int number) {
                On::Accept().Returns(2001, "10.0.0.9", 40000);
                On::Getsockname().Fails(number);
            },
        .operation = [&] { listener->Accept(remote_); },
        .text = "VelNet::SocketImpl::Send() - FAIL. The ::getsockname failed",
        .calls = {"accept(1001, 16)", "getsockname(1001, 16)", "WSAGetLastError()"},
        .memory = [&] { return MemoryOf(*listener)() + ' ' + EndpointText(remote_); },
        .callsAfterwards = {"closesocket(2001)"},
    });
}

TEST_F(Accept, NewSocketWithoutKnownLocalAddressEndsWithDefaultAddressesInItsRecord) {
    const auto listener = MakeSocket(STATE_LISTENING);
    On::Accept().Returns(2001, "10.0.0.9", 40000);
    On::Getsockname().Fails(10055);
    const Caught caught = Catch([&] { listener->Accept(remote_); });
    EXPECT_EQ(TranscriptWithRecordsShortened(),
              (Lines{"accept(1001, 16)", "getsockname(1001, 16)", "WSAGetLastError()", "LogMessage",
                     "closesocket(2001)", "LogMessage"}));
    ExpectRecords(
        {FailureRecord(caught.text), ConnectionRecord("Disconnected", "0.0.0.0", 0, "0.0.0.0", 0)});
    EXPECT_EQ(EndpointText(remote_), "10.0.0.9:40000");
    EXPECT_EQ(FieldsOf(*listener), (SocketFields{1001, STATE_LISTENING, "0.0.0.0:0", "0.0.0.0:0"}));
}

TEST_F(Accept, LogThatFailsLosesTheRecordAlone) {
    const auto listener = MakeSocket(STATE_LISTENING);
    On::Accept().Returns(2001, "10.0.0.9", 40000);
    On::Getsockname().Returns("10.0.0.1", 8080);
    On::LogMessage().Throws(std::bad_alloc());
    const VelBase::ReturnPtrI<Socket> accepted = listener->Accept(remote_);
    ASSERT_TRUE(accepted);
    EXPECT_TRUE(accepted->IsValid());
    EXPECT_EQ(EndpointText(remote_), "10.0.0.9:40000");
    EXPECT_EQ(TranscriptWithRecordsShortened(),
              (Lines{"accept(1001, 16)", "getsockname(1001, 16)", "LogMessage"}));
}

// The object, and for each of its two addresses a record and a block of octets.
TEST_F(Accept, TakesMemoryForTheNewSocketAlone) {
    const auto listener = MakeSocket(STATE_LISTENING);
    SetRouterFlag(ConnectionCategory, 0);
    On::Accept().Returns(2001, "10.0.0.9", 40000);
    const Allocations::Mark mark;
    const auto accepted = listener->Accept(remote_);
    EXPECT_EQ(mark.Requests(), 5U);
}

// What is needed of memory is taken first, so that the connection stays with the system. A record
// that finds none is lost.
TEST_F(Accept, ExhaustedMemoryLosesNoConnectionAndNoRecord) {
    const auto listener = MakeSocket(STATE_LISTENING);
    const SocketFields before = FieldsOf(*listener);
    const std::size_t failed = FailEveryAllocation([&](std::size_t n) {
        SCOPED_TRACE(n);
        ClearTranscript();
        VelBase::ReturnPtrI<Socket> accepted;
        const Starved starved = Starve(n, [&] { accepted = listener->Accept(remote_); });
        EXPECT_EQ(starved.outOfMemory, starved.happened);
        EXPECT_EQ(static_cast<bool>(accepted), !starved.happened);
        EXPECT_EQ(CountOf("accept"), starved.happened ? 0 : 1);
        EXPECT_EQ(CountOf("LogMessage"), starved.happened ? 0 : 1);
        EXPECT_EQ(CountOf("closesocket"), 0);
        EXPECT_EQ(FieldsOf(*listener), before);
        return starved.happened;
    });
    EXPECT_EQ(failed, 5U) << "the socket and what it remembers";
}

TEST_F(Accept, ExhaustedMemoryWhileTheFailureIsToldChangesNothing) {
    const auto listener = MakeSocket(STATE_LISTENING);
    std::size_t n = 1;
    for (bool exhausted = true; exhausted; ++n) {
        On::Accept().Fails(10024);
        exhausted = RunsOutOfMemory(n, [&] { Catch([&] { listener->Accept(remote_); }); });
        ForgetAnswers();
        EXPECT_EQ(EndpointText(remote_), "9.8.7.6:54");
        EXPECT_EQ(FieldsOf(*listener).state, STATE_LISTENING);
    }
    EXPECT_GT(n, 2U);
}

}  // namespace
}  // namespace SocketTests

// SocketXt::Accept.
#include "XtFixture.h"

namespace SocketTests {
namespace {

const XtFailure NotAccepted{"VelNet::SocketXtImpl::Accept",
                            "cannot accept on local socket from remote address", "::accept",
                            LocalText, LocalService};
const XtFailure PeerNotTold{"VelNet::SocketXtImpl::Accept", "cannot get remote host name and port",
                            "::getnameinfo", "no-ip", "no-port"};

class XtAccept : public XtTest {
protected:
    void TearDown() override {
        accepted_ = {};
        host_ = {};
        port_ = {};
        XtTest::TearDown();
    }

    static VelBase::ReturnPtrI<SocketXtImpl> MakeListener() {
        auto listener = MakeXt(STATE_LISTENING);
        StoreTexts(*listener);
        return listener;
    }

    static void ScriptPeer() { On::Accept().Returns(2001, "10.0.0.9", 4711); }

    void AcceptOn(SocketXt& listener) { listener.Accept(accepted_, host_, port_); }

    // What a caller has in the variables before the call.
    VelBase::ReturnPtrI<SocketXt> accepted_;
    VelBase::ReturnString host_{"earlier host"};
    VelBase::ReturnString port_{"earlier port"};
};

const Lines CallsUpToThePeer = {"WSAStartup(0x0101)", "accept(1001, 128)",
                                "getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)"};

TEST_F(XtAccept, AcceptsAsksForThePeersTextsRecordsAndCleansUp) {
    const auto listener = MakeListener();
    ScriptPeer();
    AcceptOn(*listener);
    EXPECT_EQ(Transcript(),
              (Lines{"WSAStartup(0x0101)", "accept(1001, 128)",
                     "getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)",
                     "LogMessage(Connection Trace, \"Connected, Local address: here.example "
                     "(4000), Remote address: 10.0.0.9 (4711)\")",
                     "WSACleanup()"}));
    ExpectRecords({XtConnectionRecord("Connected", LocalText, LocalService, "10.0.0.9", "4711")});
}

TEST_F(XtAccept, PeersNumericTextsComeOutAndStayWithTheListener) {
    const auto listener = MakeListener();
    ScriptPeer();
    On::Getnameinfo().Returns("2001:db8::7", "65535");
    AcceptOn(*listener);
    EXPECT_STREQ(host_.c_str(), "2001:db8::7");
    EXPECT_STREQ(port_.c_str(), "65535");
    EXPECT_EQ(FieldsOf(*listener), (XtFields{1001, STATE_LISTENING, LocalText, LocalService,
                                             "2001:db8::7", "65535", 1, 6, SocketXt::FAMILY_IPV4}));
}

TEST_F(XtAccept, LongestTextsComeOutWhole) {
    const auto listener = MakeListener();
    ScriptPeer();
    On::Getnameinfo().Returns(std::string(1024, 'h'), std::string(31, 'p'));
    AcceptOn(*listener);
    EXPECT_EQ(host_.c_str(), std::string(1024, 'h'));
    EXPECT_EQ(port_.c_str(), std::string(31, 'p'));
    EXPECT_EQ(FieldsOf(*listener).remoteHost, std::string(1024, 'h'));
}

// The port is stored last.
TEST_F(XtAccept, OneVariableForBothTextsEndsAsThePort) {
    const auto listener = MakeListener();
    ScriptPeer();
    listener->Accept(accepted_, host_, host_);
    EXPECT_STREQ(host_.c_str(), "4711");
}

TEST_F(XtAccept, LatestPeerIsTheOneTheListenerRemembers) {
    const auto listener = MakeListener();
    On::Accept().Returns(2001, "10.0.0.8", 1).Returns(2002, "10.0.0.9", 2);
    AcceptOn(*listener);
    EXPECT_EQ(FieldsOf(*listener).remoteHost, "10.0.0.8");
    AcceptOn(*listener);
    EXPECT_EQ(FieldsOf(*listener).remoteHost, "10.0.0.9");
    EXPECT_EQ(FieldsOf(*listener).remotePort, "2");
}

TEST_F(XtAccept, NewSocketIsConnectedLikeItsListenerAndKnowsNoTexts) {
    for (const SocketXt::ADDR_FAMILY family :
         {SocketXt::FAMILY_UNKNOWN, SocketXt::FAMILY_IPV4, SocketXt::FAMILY_IPV6}) {
        const auto listener = MakeXt(STATE_BOUND, 7, 8, family);
        StoreTexts(*listener);
        On::Accept().Returns(2001, "10.0.0.9", 4711);
        AcceptOn(*listener);
        EXPECT_EQ(FieldsOf(accepted_),
                  (XtFields{2001, STATE_CONNECTED, "", "", "", "", 7, 8, family}));
        EXPECT_EQ(FieldsOf(*listener).state, STATE_BOUND);
        EXPECT_EQ(ImplementationOf(*accepted_).GetReferenceCount(), 1);
        accepted_ = {};
    }
}

TEST_F(XtAccept, NewSocketsEndShowsEmptyTexts) {
    const auto listener = MakeListener();
    ScriptPeer();
    AcceptOn(*listener);
    accepted_ = {};
    ExpectRecords({XtConnectionRecord("Connected", LocalText, LocalService, "10.0.0.9", "4711"),
                   XtConnectionRecord("Disconnected", "", "", "", "")});
    EXPECT_EQ(CountOf("closesocket"), 1);
}

TEST_F(XtAccept, ResultIsTheArgument) {
    const auto listener = MakeListener();
    ScriptPeer();
    EXPECT_EQ(&listener->Accept(accepted_, host_, port_), &accepted_);
}

TEST_F(XtAccept, SocketHeldBeforeIsReleased) {
    const auto listener = MakeListener();
    On::Accept().Returns(2001, "10.0.0.8", 1).Returns(2002, "10.0.0.9", 2);
    AcceptOn(*listener);
    AcceptOn(*listener);
    EXPECT_EQ(EventsOf("closesocket").size(), 1U);
    EXPECT_EQ(LastEventOf("closesocket").text, "closesocket(2001)");
    EXPECT_EQ(accepted_->GetHandle(), 2002U);
}

TEST_F(XtAccept, SocketHeldBeforeIsReleasedOnceAndKeptWhereOthersHoldIt) {
    const auto listener = MakeListener();
    On::Accept().Returns(2001, "10.0.0.8", 1).Returns(2002, "10.0.0.9", 2);
    AcceptOn(*listener);
    const VelBase::ReturnPtrI<SocketXt> second = accepted_.Get();
    AcceptOn(*listener);
    EXPECT_EQ(ImplementationOf(*second).GetReferenceCount(), 1);
    EXPECT_EQ(CountOf("closesocket"), 0);
}

TEST_F(XtAccept, ListenerMayBeWhatTheVariableHolds) {
    VelBase::ReturnPtrI<SocketXt> variable;
    {
        const auto listener = MakeListener();
        variable = listener.Get();
    }
    ScriptPeer();
    variable->Accept(variable, host_, port_);
    EXPECT_EQ(LastEventOf("closesocket").text, "closesocket(1001)");
    EXPECT_EQ(variable->GetHandle(), 2001U);
}

// Whatever the system says about the length.
TEST_F(XtAccept, AddressIsPutToTheResolverWithTheLengthOfTheStorage) {
    const auto listener = MakeListener();
    On::Accept()
        .ReturnsRaw(2001, SocketAddressBytes("10.0.0.9", 4711))
        .ReturnsRaw(2002, SocketAddressBytesIpv6("2001:DB8::9", 4711, 3))
        .ReturnsRaw(2003, std::string("\x02", 1));
    AcceptOn(*listener);
    EXPECT_EQ(LastEventOf("getnameinfo").text, "getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)");
    EXPECT_EQ(LastEventOf("getnameinfo").bytes,
              SocketAddressBytes("10.0.0.9", 4711) + std::string(112, '\0'));
    AcceptOn(*listener);
    EXPECT_EQ(LastEventOf("getnameinfo").text,
              "getnameinfo([2001:DB8:0:0:0:0:0:9%3]:4711, 128, 1025, 32, 10)");
    AcceptOn(*listener);
    EXPECT_EQ(LastEventOf("getnameinfo").text, "getnameinfo(0.0.0.0:0, 128, 1025, 32, 10)");
}

TEST_F(XtAccept, ServiceIsAskedForAsAStreamsWhateverTheType) {
    const auto listener = MakeDatagramXt();
    ScriptPeer();
    AcceptOn(*listener);
    EXPECT_EQ(LastEventOf("getnameinfo").numbers.back(), 10);
}

TEST_F(XtAccept, EachFailureIsReportedAndChangesNothing) {
    const auto listener = MakeListener();
    ExpectEachXtFailure({
        .failWith = [](int number) { On::Accept().Fails(number); },
        .operation = [&] { AcceptOn(*listener); },
        .failure = NotAccepted,
        .calls = {"WSAStartup(0x0101)", "accept(1001, 128)", "WSAGetLastError()"},
        .callsAfterwards = {"WSACleanup()"},
        .memory = MemoryOf(*listener, host_, port_),
    });
    EXPECT_FALSE(accepted_);
}

// The classic socket returns nothing then.
TEST_F(XtAccept, NothingPendingIsAFailureToo) {
    const auto listener = MakeListener();
    for (const int number : {10035, 11}) {
        On::Accept().Fails(number);
        EXPECT_EQ(Catch([&] { AcceptOn(*listener); }), NotAccepted.With(number));
    }
    EXPECT_EQ(LoggedTexts(ErrorCategory)[0],
              u"VelNet::SocketXtImpl::Accept , cannot accept on local socket from remote address , "
              u"::accept , here.example : 4000 , errno = \u2733 Resource temporarily unavailable");
}

TEST_F(XtAccept, FailureKeepsTheSocketHeldBefore) {
    const auto listener = MakeListener();
    On::Accept().Returns(2001, "10.0.0.8", 1).Fails(10024);
    AcceptOn(*listener);
    EXPECT_TRUE(Catch([&] { AcceptOn(*listener); }).thrown);
    ASSERT_TRUE(accepted_);
    EXPECT_EQ(accepted_->GetHandle(), 2001U);
    EXPECT_EQ(CountOf("closesocket"), 0);
}

TEST_F(XtAccept, EachFailureToTellThePeerIsLoggedAndTheSocketReturned) {
    const auto listener = MakeListener();
    ExpectEachXtFailure({
        .failWith =
            [](int number) {
                ScriptPeer();
                On::Getnameinfo().FailsReturning(8, number);
            },
        .operation =
            [&] {
                AcceptOn(*listener);
                EXPECT_EQ(FieldsOf(accepted_), (XtFields{2001, STATE_CONNECTED, "", "", "", "", 1,
                                                         6, SocketXt::FAMILY_IPV4}));
                accepted_ = {};
            },
        .failure = PeerNotTold,
        .calls = {"WSAStartup(0x0101)", "accept(1001, 128)",
                  "getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)", "WSAGetLastError()"},
        .callsAfterwards = {"WSACleanup()", "closesocket(2001)"},
        .memory = MemoryOf(*listener, host_, port_),
        .isThrown = false,
    });
}

TEST_F(XtAccept, PeerThatCannotBeToldIsNotRecordedAsConnected) {
    const auto listener = MakeListener();
    ScriptPeer();
    On::Getnameinfo().Fails(10047);
    AcceptOn(*listener);
    ExpectRecords({PeerNotTold.RecordWith(10047)});
    EXPECT_EQ(LoggedTexts(ErrorCategory)[0],
              u"VelNet::SocketXtImpl::Accept , cannot get remote host name and port , "
              u"::getnameinfo , no-ip : no-port , errno = \u273F Address family not supported by "
              u"protocol family");
    EXPECT_STREQ(host_.c_str(), "earlier host");
    EXPECT_STREQ(port_.c_str(), "earlier port");
}

TEST_F(XtAccept, WritesWhatTheRoutersAskFor) {
    const auto listener = MakeListener();
    for (const Routers& routers : AllCombinationsOfRouters()) {
        Switch(routers);
        ClearTranscript();
        const int requestsBefore = FormatterRequests();
        ScriptPeer();
        AcceptOn(*listener);
        EXPECT_EQ(CountOf("LogMessage"), routers.connection ? 1 : 0);
        EXPECT_EQ(FormatterRequests() - requestsBefore, routers.connection ? 1 : 0);
        Switch({});
        accepted_ = {};
    }
}

TEST_F(XtAccept, ClosedSocketGoesToTheSystem) {
    const auto listener = MakeClosedXt();
    StoreTexts(*listener);
    On::Accept().Fails(10038);
    EXPECT_EQ(Catch([&] { AcceptOn(*listener); }), NotAccepted.With(10038));
    EXPECT_EQ(LastEventOf("accept").text, "accept(INVALID, 128)");
}

TEST_F(XtAccept, LogThatFailsLosesTheRecordAlone) {
    const auto listener = MakeListener();
    ScriptPeer();
    On::LogMessage().Throws(std::bad_alloc());
    EXPECT_NO_THROW(AcceptOn(*listener));
    ASSERT_TRUE(accepted_);
    EXPECT_STREQ(host_.c_str(), "10.0.0.9");
    EXPECT_EQ(CountOf("closesocket"), 0);
}

TEST_F(XtAccept, LogThatFailsLosesTheReportAlone) {
    const auto listener = MakeListener();
    ScriptPeer();
    On::Getnameinfo().Fails(10047);
    On::LogMessage().Throws(7);
    EXPECT_NO_THROW(AcceptOn(*listener));
    ASSERT_TRUE(accepted_);
    EXPECT_EQ(CountOf("closesocket"), 0);
    EXPECT_EQ(CountOf("WSACleanup"), 1);
}

TEST_F(XtAccept, LogThatThrowsOnAFailureLeavesNothingOpen) {
    const auto listener = MakeListener();
    On::Accept().Fails(10024);
    On::LogMessage().Throws(7);
    EXPECT_ANY_THROW(AcceptOn(*listener));
    EXPECT_EQ(CountOf("WSACleanup"), 1);
}

// What is thrown between the system's accept and the result leaves the handle to nobody else.
TEST_F(XtAccept, ResolverThatThrowsClosesTheNewHandleOnce) {
    const auto listener = MakeListener();
    SetRouterFlag(ConnectionCategory, 0);
    ScriptPeer();
    On::Getnameinfo().Throws(7);
    EXPECT_THROW(AcceptOn(*listener), int);
    EXPECT_EQ(SystemCalls(), (Lines{"WSAStartup(0x0101)", "accept(1001, 128)",
                                    "getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)",
                                    "closesocket(2001)", "WSACleanup()"}));
    EXPECT_FALSE(accepted_);
}

// All memory is taken before the connection is, which else stays with the system; for want of
// memory afterwards the record alone is lost.
TEST_F(XtAccept, ExhaustedMemoryTakesNoConnectionAndChangesNothing) {
    const std::string longHost = "fe80:ffff:ffff:ffff:ffff:ffff:255.255.255.255%4294967295";
    int failedCalls = 0;
    int recordsLost = 0;
    FailEveryAllocation([&](std::size_t n) {
        SCOPED_TRACE(n);
        host_ = "earlier host";
        port_ = "earlier port";
        const auto listener = MakeListener();  // without room for a peer from the last time
        const std::string before = MemoryOf(*listener, host_, port_)();
        ScriptPeer();
        On::Getnameinfo().Returns(longHost, "65535");
        accepted_ = {};
        ClearTranscript();
        const Starved starved = Starve(n, [&] { AcceptOn(*listener); });
        ForgetAnswers();
        EXPECT_EQ(static_cast<bool>(accepted_), !starved.outOfMemory);
        EXPECT_EQ(CountOf("accept"), starved.outOfMemory ? 0 : 1);
        EXPECT_EQ(CountOf("closesocket"), 0);
        EXPECT_EQ(CountOf("WSACleanup"), 1);
        if (starved.outOfMemory) {
            EXPECT_EQ(MemoryOf(*listener, host_, port_)(), before);
            ++failedCalls;
        } else {
            EXPECT_EQ(FieldsOf(*listener).remoteHost, longHost);
            EXPECT_EQ(host_.c_str(), longHost);
            EXPECT_STREQ(port_.c_str(), "65535");
            if (CountOf("LogMessage") == 0) ++recordsLost;
        }
        return starved.happened;
    });
    EXPECT_GE(failedCalls, 3) << "the socket and the room for the texts";
    EXPECT_GE(recordsLost, 1);
}

TEST_F(XtAccept, ExhaustedMemoryWhileTheReportIsMadeCostsNothingElse) {
    SetRouterFlag(ConnectionCategory, 0);
    int reportsLost = 0;
    FailEveryAllocation([&](std::size_t n) {
        SCOPED_TRACE(n);
        const auto listener = MakeListener();  // without room for a peer from the last time
        ScriptPeer();
        On::Getnameinfo().Fails(10047);
        accepted_ = {};
        ClearTranscript();
        const Starved starved = Starve(n, [&] { AcceptOn(*listener); });
        ForgetAnswers();
        EXPECT_EQ(static_cast<bool>(accepted_), !starved.outOfMemory);
        EXPECT_EQ(CountOf("accept"), starved.outOfMemory ? 0 : 1);
        EXPECT_EQ(CountOf("closesocket"), 0);
        if (starved.happened && !starved.outOfMemory) ++reportsLost;
        return starved.happened;
    });
    EXPECT_GE(reportsLost, 1);
}

}  // namespace
}  // namespace SocketTests

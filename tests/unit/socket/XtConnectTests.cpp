// SocketXt::Connect by host and port.
#include "XtFixture.h"

namespace SocketTests {
namespace {

class XtConnect : public XtTest {};

constexpr char Function[] = "VelNet::SocketXtImpl::Connect";
constexpr char Description[] = "cannot connect local socket to a remote address";

const XtFailure NotResolved{Function, Description, "::getaddrinfo", "host", "80"};
const XtFailure NotConnected{Function, Description, "::connect", "SCRIPTED-HOST:0", "host:80"};

Lines CallsAround(const Lines& attempts, const Lines& end) {
    Lines calls = {"WSAStartup(0x0101)", "ComputerName()",
                   "getaddrinfo(\"host\", \"80\", {0, 0, 1, 6})"};
    calls.insert(calls.end(), attempts.begin(), attempts.end());
    calls.insert(calls.end(), end.begin(), end.end());
    return calls;
}

Record ConnectedTo(const std::string& host, const std::string& port) {
    return XtConnectionRecord("Connected", ThisMachine, "0", host, port);
}

TEST_F(XtConnect, ResolvesConnectsRecordsAndCleansUp) {
    const auto socket = MakeXt();
    socket->Connect("host", "80");
    EXPECT_EQ(
        Transcript(),
        (Lines{"WSAStartup(0x0101)", "ComputerName()", "CodePageFromWide(\"SCRIPTED-HOST\", 13)",
               "getaddrinfo(\"host\", \"80\", {0, 0, 1, 6})", "connect(1001, 10.0.0.1:80, 16)",
               "freeaddrinfo(1)",
               "LogMessage(Connection Trace, \"Connected, Local address: SCRIPTED-HOST (0), "
               "Remote address: host (80)\")",
               "WSACleanup()"}));
    ExpectRecords({ConnectedTo("host", "80")});
}

// The scripted code page is Latin-1.
TEST_F(XtConnect, RecordAndFailureReadTheirTextsInTheSystemsCodePage) {
    const auto socket = MakeXt();
    On::ComputerName().Returns(u"B\u00E4r");
    socket->Connect("h\xF6st", "80");
    EXPECT_EQ(LoggedTexts(ConnectionCategory),
              std::vector<std::u16string>{u"Connected, Local address: B\u00E4r (0), "
                                          u"Remote address: h\u00F6st (80)"});
    On::ComputerName().Returns(u"B\u00E4r");
    On::Connect().Fails(10061);
    EXPECT_EQ(Catch([&] { socket->Connect("h\xF6st", "80"); }).text,
              u"VelNet::SocketXtImpl::Connect , cannot connect local socket to a remote address , "
              u"::connect , B\u00E4r:0 : h\u00F6st:80 , errno = \u274D Connection refused");
}

TEST_F(XtConnect, HintsAreTheSocketsTypeAndProtocolAlone) {
    const auto socket = MakeXt(STATE_CREATED, 2, 17, SocketXt::FAMILY_IPV6);
    socket->Connect("host", "80");
    EXPECT_EQ(LastEventOf("getaddrinfo").text, "getaddrinfo(\"host\", \"80\", {0, 0, 2, 17})");
    const auto odd = MakeXt(STATE_CREATED, -5, 0);
    odd->Connect("host", "80");
    EXPECT_EQ(LastEventOf("getaddrinfo").text, "getaddrinfo(\"host\", \"80\", {0, 0, -5, 0})");
}

TEST_F(XtConnect, EntrysAddressIsPassedWithItsOwnLength) {
    const auto socket = MakeXt();
    On::Getaddrinfo().Returns({{99, "abcde"}});
    socket->Connect("host", "80");
    EXPECT_EQ(LastEventOf("connect").text, "connect(1001, 0x6162636465, 5)");
}

TEST_F(XtConnect, TextsGivenAreRememberedAndNotTheAddress) {
    for (const SocketState state : OpenStates) {
        const auto socket = MakeXt(state);
        socket->Connect("host.example", "http");
        EXPECT_EQ(FieldsOf(*socket),
                  (XtFields{socket->GetHandle(), STATE_CONNECTED, ThisMachine, "0", "host.example",
                            "http", 1, 6, SocketXt::FAMILY_IPV4}));
    }
}

TEST_F(XtConnect, LocalTextsBecomeThisMachinesBeforeTheHostIsResolved) {
    const auto socket = MakeAddressedXt();
    XtFields seen{};
    Observe("getaddrinfo", [&](const Event&) { seen = FieldsOf(*socket); });
    socket->Connect("host", "80");
    EXPECT_EQ(seen, (XtFields{1001, STATE_CONNECTED, ThisMachine, "0", RemoteText, RemoteService, 1,
                              6, SocketXt::FAMILY_IPV4}));
}

TEST_F(XtConnect, WinsockThatDoesNotStartLeavesTheLocalTexts) {
    const auto socket = MakeAddressedXt();
    const XtFields before = FieldsOf(*socket);
    On::WSAStartup().Returns(10091);
    EXPECT_ANY_THROW(socket->Connect("host", "80"));
    EXPECT_EQ(FieldsOf(*socket), before);
    EXPECT_EQ(CountOf("ComputerName"), 0);
}

TEST_F(XtConnect, NameOfThisMachineIsNarrowedToTheCodePage) {
    const auto socket = MakeXt();
    On::ComputerName().Returns(u"B\u00E4r\u20AC");
    socket->Connect("host", "80");
    EXPECT_EQ(FieldsOf(*socket).localHost, "B\xE4r?");
}

TEST_F(XtConnect, AddressesAreTriedInOrderUntilOneAccepts) {
    SetRouterFlag(ConnectionCategory, 0);
    for (const AddressSequence& sequence : AllAddressSequences()) {
        const auto socket = MakeXt();
        sequence.Script(On::Connect());
        const Caught caught = Catch([&] { socket->Connect("host", "80"); });
        const std::string handle = std::to_string(socket->GetHandle());
        const Lines attempts = sequence.Calls("connect(" + handle + ", ", ")");
        XtFields after{socket->GetHandle(),  STATE_CREATED, ThisMachine, "0", "", "", 1, 6,
                       SocketXt::FAMILY_IPV4};
        if (sequence.Succeeds()) {
            after.state = STATE_CONNECTED;
            after.remoteHost = "host";
            after.remotePort = "80";
            EXPECT_EQ(caught, Caught());
            EXPECT_EQ(SystemCalls(), CallsAround(attempts, {"freeaddrinfo(1)", "WSACleanup()"}));
        } else {
            EXPECT_EQ(caught, NotConnected.With(sequence.LastError()));
            EXPECT_EQ(SystemCalls(), CallsAround(attempts, {"WSAGetLastError()", "freeaddrinfo(1)",
                                                            "LogMessage", "WSACleanup()"}));
        }
        EXPECT_EQ(FieldsOf(*socket), after);
    }
}

TEST_F(XtConnect, RecordOfASecondAddressShowsTheTextGiven) {
    const auto socket = MakeXt();
    On::Getaddrinfo().Returns({{2, "10.0.0.1", 80}, {2, "10.0.0.2", 80}});
    On::Connect().Fails(10061).Passes();
    socket->Connect("host", "80");
    ExpectRecords({ConnectedTo("host", "80")});
    EXPECT_EQ(FieldsOf(*socket).remoteHost, "host");
}

TEST_F(XtConnect, HostWithoutAddressesIsRecordedAsConnectedAllTheSame) {
    for (const SocketState state : OpenStates) {
        const auto socket = MakeXt(state);
        StoreTexts(*socket);
        On::Getaddrinfo().ReturnsEmpty();
        EXPECT_EQ(Catch([&] { socket->Connect("host", "80"); }), Caught());
        EXPECT_EQ(FieldsOf(*socket),
                  (XtFields{socket->GetHandle(), state, ThisMachine, "0", RemoteText, RemoteService,
                            1, 6, SocketXt::FAMILY_IPV4}));
        EXPECT_EQ(CountOf("connect"), 0);
        EXPECT_EQ(CountOf("WSAGetLastError"), 0);
        EXPECT_EQ(LoggedTexts(ConnectionCategory).back(),
                  u"Connected, Local address: SCRIPTED-HOST (0), "
                  u"Remote address: there.example (http)");
        EXPECT_EQ(SystemCalls().back(), "WSACleanup()");
    }
}

TEST_F(XtConnect, RecordIsWrittenAfterTheListAndBeforeTheCleanUp) {
    const auto socket = MakeXt();
    int lists = -1, cleanUps = -1;
    SocketState state = STATE_CLOSED;
    Observe("LogMessage", [&](const Event&) {
        lists = CountOf("freeaddrinfo");
        cleanUps = CountOf("WSACleanup");
        state = FieldsOf(*socket).state;
    });
    socket->Connect("host", "80");
    SetRouterFlag(ConnectionCategory, 0);
    EXPECT_EQ(lists, 1);
    EXPECT_EQ(cleanUps, 0);
    EXPECT_EQ(state, STATE_CONNECTED);
}

TEST_F(XtConnect, WritesWhatTheRoutersAskFor) {
    for (const Routers& routers : AllCombinationsOfRouters()) {
        const auto socket = MakeXt();
        Switch(routers);
        const int requestsBefore = FormatterRequests();
        socket->Connect("host", "80");
        EXPECT_EQ(CountOf("LogMessage"), routers.connection ? 1 : 0);
        EXPECT_EQ(FormatterRequests() - requestsBefore, routers.connection ? 1 : 0);
        Switch({});
    }
}

TEST_F(XtConnect, EachFailureToResolveIsReportedWithTheLastError) {
    const auto socket = MakeAddressedXt();
    Catch([&] {
        On::Connect().Fails(10061);
        socket->Connect("host", "80");
    });
    ExpectEachXtFailure({
        .failWith = [](int number) { On::Getaddrinfo().FailsReturning(8, number); },
        .operation = [&] { socket->Connect("host", "80"); },
        .failure = NotResolved,
        .calls = CallsAround({"WSAGetLastError()"}, {}),
        .callsAfterwards = {"WSACleanup()"},
        .memory = MemoryOf(*socket),
    });
}

TEST_F(XtConnect, EachRefusalIsReportedWithBothEndpoints) {
    const auto socket = MakeXt();
    Catch([&] {
        On::Connect().Fails(10061);
        socket->Connect("host", "80");
    });
    ExpectEachXtFailure({
        .failWith = [](int number) { On::Connect().Fails(number); },
        .operation = [&] { socket->Connect("host", "80"); },
        .failure = NotConnected,
        .calls = CallsAround({"connect(1001, 10.0.0.1:80, 16)"},
                             {"WSAGetLastError()", "freeaddrinfo(1)"}),
        .callsAfterwards = {"WSACleanup()"},
        .memory = MemoryOf(*socket),
    });
}

TEST_F(XtConnect, FailureLeavesThisMachinesNameAndAllElseAsItWas) {
    for (const bool resolves : {false, true}) {
        const auto socket = MakeXt(STATE_BOUND);
        StoreTexts(*socket);
        if (resolves)
            On::Connect().Fails(10061);
        else
            On::Getaddrinfo().Fails(11001);
        EXPECT_TRUE(Catch([&] { socket->Connect("host", "80"); }).thrown);
        EXPECT_EQ(FieldsOf(*socket),
                  (XtFields{socket->GetHandle(), STATE_BOUND, ThisMachine, "0", RemoteText,
                            RemoteService, 1, 6, SocketXt::FAMILY_IPV4}));
    }
}

TEST_F(XtConnect, RefusedPeerIsTold) {
    const auto socket = MakeXt();
    On::ComputerName().Returns(u"host1");
    On::Connect().Fails(10061);
    const Caught caught = Catch([&] { socket->Connect("host2", "80"); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketXtImpl::Connect , cannot connect local socket to a remote address , "
              u"::connect , host1:0 : host2:80 , errno = \u274D Connection refused");
    EXPECT_EQ(caught.code, 10061);
    ExpectRecords({FailureRecord(caught.text)});
}

TEST_F(XtConnect, ConnectionNotMadeAtOnceIsAFailure) {
    const auto socket = MakeXt();
    On::Connect().Fails(10035);
    EXPECT_EQ(Catch([&] { socket->Connect("host", "80"); }), NotConnected.With(10035));
    EXPECT_EQ(FieldsOf(*socket).state, STATE_CREATED);
}

TEST_F(XtConnect, EmptyTextsLeaveTheColon) {
    const auto socket = MakeXt();
    On::Connect().Fails(10049);
    EXPECT_EQ(Catch([&] { socket->Connect("", ""); }),
              (XtFailure{Function, Description, "::connect", "SCRIPTED-HOST:0", ":"}.With(10049)));
    EXPECT_EQ(LastEventOf("getaddrinfo").text, "getaddrinfo(\"\", \"\", {0, 0, 1, 6})");
}

TEST_F(XtConnect, MissingTextsArePassedOnAndRememberedAsEmpty) {
    const auto socket = MakeAddressedXt();
    const char* const none = nullptr;
    socket->Connect(none, none);
    EXPECT_EQ(LastEventOf("getaddrinfo").text, "getaddrinfo(null, null, {0, 0, 1, 6})");
    EXPECT_EQ(FieldsOf(*socket).remoteHost, "");
    EXPECT_EQ(FieldsOf(*socket).remotePort, "");
}

TEST_F(XtConnect, ClosedSocketGoesToTheSystem) {
    const auto socket = MakeClosedXt();
    On::Connect().Fails(10038);
    EXPECT_EQ(Catch([&] { socket->Connect("host", "80"); }), NotConnected.With(10038));
    EXPECT_EQ(LastEventOf("connect").text, "connect(INVALID, 10.0.0.1:80, 16)");
}

TEST_F(XtConnect, LogThatFailsLosesTheRecordAlone) {
    const auto socket = MakeXt();
    On::LogMessage().Throws(std::bad_alloc());
    EXPECT_NO_THROW(socket->Connect("host", "80"));
    EXPECT_EQ(FieldsOf(*socket).state, STATE_CONNECTED);
    EXPECT_EQ(CountOf("WSACleanup"), 1);
}

// Once the system has connected, the record alone can be lost.
TEST_F(XtConnect, ExhaustedMemoryLeavesASocketThatKnowsWhetherItIsConnected) {
    const std::string host(100, 'h');
    const std::size_t failed = FailEveryAllocation([&](std::size_t n) {
        SCOPED_TRACE(n);
        const auto socket = MakeXt();
        const Starved starved = Starve(n, [&] { socket->Connect(host.c_str(), host.c_str()); });
        const bool connected = CountOf("connect") == 1;
        EXPECT_EQ(CountOf("WSACleanup"), 1);
        EXPECT_EQ(CountOf("freeaddrinfo"), CountOf("getaddrinfo"));
        EXPECT_EQ(starved.outOfMemory, !connected);
        EXPECT_EQ(FieldsOf(*socket).state, connected ? STATE_CONNECTED : STATE_CREATED);
        EXPECT_EQ(FieldsOf(*socket).remoteHost, connected ? host : "");
        EXPECT_EQ(CountOf("LogMessage"), starved.happened ? 0 : 1);
        return starved.happened;
    });
    EXPECT_GE(failed, 4U);
}

TEST_F(XtConnect, ExhaustedMemoryWhileTheFailureIsToldLeavesNothingOpen) {
    const auto socket = MakeXt();
    const std::size_t failed =
        ExhaustMemory([] { On::Connect().Fails(10061); }, [&] { socket->Connect("host", "80"); },
                      [&](const Starved& starved) {
                          EXPECT_EQ(starved.outOfMemory, starved.happened);
                          EXPECT_EQ(CountOf("WSACleanup"), 1);
                          EXPECT_EQ(FieldsOf(*socket).state, STATE_CREATED);
                      });
    EXPECT_GE(failed, 3U);
}

TEST_F(XtConnect, WorksWhileTheLayerIsDown) {
    const auto socket = MakeXt();
    BringLayerDown();
    ClearTranscript();
    socket->Connect("host", "80");
    EXPECT_EQ(FieldsOf(*socket).state, STATE_CONNECTED);
    EXPECT_EQ(FormatterRequests(), 0);
}

}  // namespace
}  // namespace SocketTests

// SocketXt::Bind by host and port, and Listen.
#include "XtFixture.h"

namespace SocketTests {
namespace {

class XtBind : public XtTest {};
class XtBindAndListen : public XtTest {};

const XtFailure NotResolved{"VelNet::SocketXtImpl::Bind", "cannot bind socket to local address",
                            "::getaddrinfo", "host", "80"};
const XtFailure NotBound{"VelNet::SocketXtImpl::Bind", "cannot bind socket to local address",
                         "::bind", "host", "80"};

XtFailure NotListening(const std::string& host, const std::string& port) {
    return {"VelNet::SocketXtImpl::Listen", "cannot listen on socket", "::listen", host, port};
}

// The calls of a bind on a stream socket, the attempts in between.
Lines CallsAround(const Lines& attempts, const Lines& end = {"freeaddrinfo(1)", "WSACleanup()"}) {
    Lines calls = {"WSAStartup(0x0101)", "getaddrinfo(\"host\", \"80\", {0, 0, 1, 6})"};
    calls.insert(calls.end(), attempts.begin(), attempts.end());
    calls.insert(calls.end(), end.begin(), end.end());
    return calls;
}

TEST_F(XtBind, ResolvesBindsAndCleansUp) {
    const auto socket = MakeXt();
    socket->Bind("host", "80");
    EXPECT_EQ(Transcript(), CallsAround({"bind(1001, 10.0.0.1:80, 16)"}));
    ExpectRecords({});
}

TEST_F(XtBind, HintsAreTheSocketsTypeAndProtocolAlone) {
    const auto socket = MakeXt(STATE_CREATED, 2, 17, SocketXt::FAMILY_IPV6);
    socket->Bind("host", "80");
    EXPECT_EQ(LastEventOf("getaddrinfo").text, "getaddrinfo(\"host\", \"80\", {0, 0, 2, 17})");
    const auto odd = MakeXt(STATE_CREATED, -5, 0);
    odd->Bind("host", "80");
    EXPECT_EQ(LastEventOf("getaddrinfo").text, "getaddrinfo(\"host\", \"80\", {0, 0, -5, 0})");
}

TEST_F(XtBind, TextsAreResolvedAnewEveryTime) {
    const auto socket = MakeXt();
    socket->Bind("host", "80");
    socket->Bind("host", "80");
    EXPECT_EQ(CountOf("getaddrinfo"), 2);
    EXPECT_EQ(CountOf("bind"), 2);
}

TEST_F(XtBind, EntrysAddressIsPassedWithItsOwnLength) {
    const auto socket = MakeXt();
    On::Getaddrinfo().Returns({{99, "abcde"}});
    socket->Bind("host", "80");
    EXPECT_EQ(LastEventOf("bind").text, "bind(1001, 0x6162636465, 5)");
    EXPECT_EQ(FieldsOf(*socket).state, STATE_BOUND);
}

TEST_F(XtBind, StreamSocketIsBoundAndDatagramSocketConnected) {
    for (const SocketState state : OpenStates) {
        for (const auto& [type, bound] : std::vector<std::pair<int, SocketState>>{
                 {1, STATE_BOUND}, {2, STATE_CONNECTED}, {0, state}, {3, state}, {-1, state}}) {
            SCOPED_TRACE(std::to_string(type) + " from " + std::to_string(state));
            const auto socket = MakeXt(state, type, 99);
            socket->Bind("host", "http");
            EXPECT_EQ(FieldsOf(*socket), (XtFields{socket->GetHandle(), bound, "host", "http", "",
                                                   "", type, 99, SocketXt::FAMILY_IPV4}));
        }
    }
}

TEST_F(XtBind, TextsGivenAreRememberedAndNotTheAddress) {
    const auto socket = MakeAddressedXt();
    socket->Bind("other.example", "0");
    EXPECT_EQ(FieldsOf(*socket), (XtFields{1001, STATE_BOUND, "other.example", "0", RemoteText,
                                           RemoteService, 1, 6, SocketXt::FAMILY_IPV4}));
}

TEST_F(XtBind, EmptyHostIsPassedOnAndRemembered) {
    const auto socket = MakeDatagramXt();
    StoreTexts(*socket);
    socket->Bind("", "0");
    EXPECT_EQ(LastEventOf("getaddrinfo").text, "getaddrinfo(\"\", \"0\", {0, 0, 2, 17})");
    EXPECT_EQ(FieldsOf(*socket).localHost, "");
    EXPECT_EQ(FieldsOf(*socket).localPort, "0");
    EXPECT_EQ(FieldsOf(*socket).state, STATE_CONNECTED);
}

TEST_F(XtBind, MissingTextsArePassedOnAndRememberedAsEmpty) {
    const auto socket = MakeAddressedXt();
    const char* const none = nullptr;
    socket->Bind(none, none);
    EXPECT_EQ(LastEventOf("getaddrinfo").text, "getaddrinfo(null, null, {0, 0, 1, 6})");
    EXPECT_EQ(FieldsOf(*socket).localHost, "");
    EXPECT_EQ(FieldsOf(*socket).localPort, "");
    On::Bind().Fails(10013);
    EXPECT_EQ(
        Catch([&] { socket->Bind(none, "80"); }),
        (XtFailure{"VelNet::SocketXtImpl::Bind", "cannot bind socket to local address", "::bind"}
             .With(10013)));
}

TEST_F(XtBind, LongTextsAreRememberedWhole) {
    const auto socket = MakeXt();
    const std::string longText(200, 'a');
    socket->Bind(longText.c_str(), longText.c_str());
    EXPECT_EQ(FieldsOf(*socket).localHost, longText);
    EXPECT_EQ(FieldsOf(*socket).localPort, longText);
}

TEST_F(XtBind, AddressesAreTriedInOrderUntilOneIsTaken) {
    for (const AddressSequence& sequence : AllAddressSequences()) {
        const auto socket = MakeXt();
        const XtFields before = FieldsOf(*socket);
        sequence.Script(On::Bind());
        const Caught caught = Catch([&] { socket->Bind("host", "80"); });
        const std::string handle = std::to_string(socket->GetHandle());
        const Lines attempts = sequence.Calls("bind(" + handle + ", ", ")");
        if (sequence.Succeeds()) {
            EXPECT_EQ(caught, Caught());
            EXPECT_EQ(SystemCalls(), CallsAround(attempts));
            EXPECT_EQ(FieldsOf(*socket).state, STATE_BOUND);
        } else {
            EXPECT_EQ(caught, NotBound.With(sequence.LastError()));
            EXPECT_EQ(SystemCalls(), CallsAround(attempts, {"WSAGetLastError()", "freeaddrinfo(1)",
                                                            "LogMessage", "WSACleanup()"}));
            EXPECT_EQ(FieldsOf(*socket), before);
        }
        SetRouterFlag(ConnectionCategory, 0);
    }
}

TEST_F(XtBind, HostWithoutAddressesIsNoFailureAndChangesNothing) {
    for (const int type : {0, 1, 2}) {
        const auto socket = MakeXt(STATE_CREATED, type);
        StoreTexts(*socket);
        const XtFields before = FieldsOf(*socket);
        On::Getaddrinfo().ReturnsEmpty();
        EXPECT_EQ(Catch([&] { socket->Bind("host", "80"); }), Caught());
        EXPECT_EQ(FieldsOf(*socket), before);
        EXPECT_EQ(CountOf("bind"), 0);
        EXPECT_EQ(CountOf("WSAGetLastError"), 0);
        EXPECT_EQ(SystemCalls().back(), "WSACleanup()");
        SetRouterFlag(ConnectionCategory, 0);
    }
    ExpectRecords({});
}

TEST_F(XtBind, EachFailureToResolveIsReportedWithTheLastError) {
    const auto socket = MakeAddressedXt();
    ExpectEachXtFailure({
        .failWith = [](int number) { On::Getaddrinfo().FailsReturning(8, number); },
        .operation = [&] { socket->Bind("host", "80"); },
        .failure = NotResolved,
        .calls = CallsAround({"WSAGetLastError()"}, {}),
        .callsAfterwards = {"WSACleanup()"},
        .memory = MemoryOf(*socket),
    });
}

TEST_F(XtBind, EachRefusalIsReportedAndLeavesTheSocketAsItWas) {
    const auto socket = MakeAddressedXt();
    ExpectEachXtFailure({
        .failWith = [](int number) { On::Bind().Fails(number); },
        .operation = [&] { socket->Bind("host", "80"); },
        .failure = NotBound,
        .calls =
            CallsAround({"bind(1001, 10.0.0.1:80, 16)"}, {"WSAGetLastError()", "freeaddrinfo(1)"}),
        .callsAfterwards = {"WSACleanup()"},
        .memory = MemoryOf(*socket),
    });
}

TEST_F(XtBind, TakenAddressIsToldWithTheTextsGiven) {
    const auto socket = MakeXt();
    On::Bind().Fails(10048);
    const Caught caught = Catch([&] { socket->Bind("0.0.0.0", "8080"); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketXtImpl::Bind , cannot bind socket to local address , ::bind , "
              u"0.0.0.0 : 8080 , errno = \u2740 Address already in use");
    EXPECT_EQ(caught.code, 10048);
}

TEST_F(XtBind, FailureOnAnEmptyHostShowsNeitherText) {
    const auto socket = MakeXt();
    On::Bind().Fails(10048);
    EXPECT_EQ(Catch([&] { socket->Bind("", "8080"); }).text,
              u"VelNet::SocketXtImpl::Bind , cannot bind socket to local address , ::bind ,  , "
              u"errno = \u2740 Address already in use");
}

TEST_F(XtBind, ClosedSocketGoesToTheSystem) {
    const auto socket = MakeClosedXt();
    On::Bind().Fails(10038);
    EXPECT_EQ(Catch([&] { socket->Bind("host", "80"); }), NotBound.With(10038));
    EXPECT_EQ(LastEventOf("bind").text, "bind(INVALID, 10.0.0.1:80, 16)");
}

TEST_F(XtBind, ExhaustedMemoryLeavesNothingOpen) {
    const std::string host(100, 'h');
    const auto socket = MakeXt();
    const XtFields before = FieldsOf(*socket);
    const std::size_t failed =
        ExhaustMemory([] {}, [&] { socket->Bind(host.c_str(), host.c_str()); },
                      [&](const Starved& starved) {
                          EXPECT_EQ(starved.outOfMemory, starved.happened);
                          if (starved.happened) {
                              EXPECT_EQ(FieldsOf(*socket), before);
                          }
                      });
    EXPECT_GE(failed, 2U);
}

TEST_F(XtBind, ExhaustedMemoryWhileTheFailureIsToldLeavesNothingOpen) {
    const auto socket = MakeXt();
    const XtFields before = FieldsOf(*socket);
    const std::size_t failed =
        ExhaustMemory([] { On::Bind().Fails(10048); }, [&] { socket->Bind("host", "80"); },
                      [&](const Starved& starved) {
                          EXPECT_EQ(starved.outOfMemory, starved.happened);
                          EXPECT_EQ(CountOf("WSACleanup"), 1);
                          EXPECT_EQ(FieldsOf(*socket), before);
                      });
    EXPECT_GE(failed, 1U);
}

TEST_F(XtBind, LogThatThrowsLeavesNothingOpen) {
    const auto socket = MakeXt();
    On::Bind().Fails(10048);
    On::LogMessage().Throws(7);
    EXPECT_ANY_THROW(socket->Bind("host", "80"));
    EXPECT_EQ(CountOf("freeaddrinfo"), 1);
    EXPECT_EQ(CountOf("WSACleanup"), 1);
}

TEST_F(XtBindAndListen, BacklogIsTwo) {
    for (const SocketState state : OpenStates) {
        const auto socket = MakeXt(state);
        EXPECT_EQ(socket->Listen(), 0);
        EXPECT_EQ(Transcript(), Lines{"listen(" + std::to_string(socket->GetHandle()) + ", 2)"});
        EXPECT_EQ(FieldsOf(*socket), (XtFields{socket->GetHandle(), STATE_LISTENING, "", "", "", "",
                                               1, 6, SocketXt::FAMILY_IPV4}));
    }
}

TEST_F(XtBindAndListen, KeepsTheTexts) {
    const auto socket = MakeAddressedXt();
    socket->Listen();
    EXPECT_EQ(FieldsOf(*socket),
              (XtFields{1001, STATE_LISTENING, LocalText, LocalService, RemoteText, RemoteService,
                        1, 6, SocketXt::FAMILY_IPV4}));
    ExpectRecords({});
}

TEST_F(XtBindAndListen, EachFailureIsReportedWithTheLocalTexts) {
    const auto socket = MakeAddressedXt();
    ExpectEachXtFailure({
        .failWith = [](int number) { On::Listen().Fails(number); },
        .operation = [&] { socket->Listen(); },
        .failure = NotListening(LocalText, LocalService),
        .calls = {"listen(1001, 2)", "WSAGetLastError()"},
        .memory = MemoryOf(*socket),
    });
}

TEST_F(XtBindAndListen, FailureKeepsEveryState) {
    for (const SocketState state : OpenStates) {
        const auto socket = MakeXt(state);
        On::Listen().Fails(10022);
        EXPECT_EQ(Catch([&] { socket->Listen(); }), NotListening("", "").With(10022));
        EXPECT_EQ(FieldsOf(*socket).state, state);
    }
}

TEST_F(XtBindAndListen, SocketThatWasNeverBoundHasNoTextsToTell) {
    const auto socket = MakeXt();
    On::Listen().Fails(10022);
    EXPECT_EQ(Catch([&] { socket->Listen(); }).text,
              u"VelNet::SocketXtImpl::Listen , cannot listen on socket , ::listen ,  , "
              u"errno = \u2726 Invalid argument");
}

TEST_F(XtBindAndListen, SocketBoundToTheEmptyHostHasNoTextsToTellEither) {
    const auto socket = MakeXt();
    socket->Bind("", "4000");
    On::Listen().Fails(10022);
    EXPECT_EQ(Catch([&] { socket->Listen(); }), NotListening("", "").With(10022));
}

TEST_F(XtBindAndListen, ClosedSocketGoesToTheSystem) {
    const auto socket = MakeClosedXt();
    On::Listen().Fails(10038);
    EXPECT_EQ(Catch([&] { socket->Listen(); }), NotListening("", "").With(10038));
    EXPECT_EQ(SystemCalls()[0], "listen(INVALID, 2)");
}

}  // namespace
}  // namespace SocketTests

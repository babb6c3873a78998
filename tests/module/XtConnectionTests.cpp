// The extended socket: binding, listening, connecting, accepting, closing.
#include "ModuleTest.h"

namespace ModuleTests {
namespace {

class XtConnection : public LayerTest {
protected:
    // Bound, with the texts "here" and "4000".
    static SocketXtPtr BoundXt() {
        SocketXtPtr socket = NewSocketXt();
        socket->Bind("here", "4000");
        ClearTranscript();
        return socket;
    }
};

constexpr char Hints[] = "getaddrinfo(\"host\", \"80\", {0, 0, 1, 6})";

const std::vector<ListedAddress>& BothFamilies() {
    static const std::vector<ListedAddress> both = {{23, "2001:DB8::1", 80}, {2, "10.0.0.1", 80}};
    return both;
}

// The calls of an operation that resolves "host" and tries both addresses, up to the second one.
Lines CallsTrying(const std::string& call) {
    return {"WSAStartup(0x0101)", Hints, call + "(1001, [2001:DB8:0:0:0:0:0:1]:80, 28)",
            call + "(1001, 10.0.0.1:80, 16)"};
}

Lines Followed(Lines calls, const Lines& end) {
    calls.insert(calls.end(), end.begin(), end.end());
    return calls;
}

TEST_F(XtConnection, BindPassesEachAddressWithItsOwnLength) {
    const SocketXtPtr socket = NewSocketXt();
    On::Getaddrinfo().Returns(BothFamilies());
    On::Bind().Fails(10049).Passes();
    socket->Bind("host", "80");
    EXPECT_EQ(Transcript(), Followed(CallsTrying("bind"), {"freeaddrinfo(1)", "WSACleanup()"}));
    On::Getaddrinfo().Returns({{99, "abcdefg"}});
    socket->Bind("host", "80");
    EXPECT_EQ(LastEventOf("bind").text, "bind(1001, 0x61626364656667, 7)");
}

TEST_F(XtConnection, BindPassesSpecialAddressesAsTexts) {
    const SocketXtPtr socket = NewSocketXt();
    for (const auto& [kind, host] : {std::pair{SPECIAL_ANY, "0.0.0.0"},
                                     {SPECIAL_LOOPBACK, "127.0.0.1"},
                                     {SPECIAL_THIS_MACHINE, "SCRIPTED-HOST"},
                                     {SPECIAL_BROADCAST, "255.255.255.255"}}) {
        socket->Bind(kind, "0");
        EXPECT_EQ(LastEventOf("getaddrinfo").text,
                  std::string("getaddrinfo(\"") + host + "\", \"0\", {0, 0, 1, 6})");
    }
}

TEST_F(XtConnection, EachFailureToBindIsTold) {
    const SocketXtPtr socket = NewSocketXt();
    const auto bind = [&] { socket->Bind("host", "80"); };
    ExpectEachFailure(
        {.failWith = [](int number) { On::Getaddrinfo().FailsReturning(8, number); },
         .operation = bind,
         .head =
             XtHead("Bind", "cannot bind socket to local address", "::getaddrinfo", "host : 80"),
         .calls = {"WSAStartup(0x0101)", Hints, "WSAGetLastError()", "WSACleanup()"}});
    ExpectEachFailure(
        {.failWith =
             [](int number) {
                 On::Getaddrinfo().Returns(BothFamilies());
                 On::Bind().Fails(10047).Fails(number);
             },
         .operation = bind,
         .head = XtHead("Bind", "cannot bind socket to local address", "::bind", "host : 80"),
         .calls = Followed(CallsTrying("bind"),
                           {"WSAGetLastError()", "freeaddrinfo(1)", "WSACleanup()"})});
}

TEST_F(XtConnection, ListenIsForTwo) {
    const SocketXtPtr socket = BoundXt();
    EXPECT_EQ(socket->Listen(), 0);
    EXPECT_EQ(Transcript(), Lines{"listen(1001, 2)"});
}

TEST_F(XtConnection, EachFailureToListenIsTold) {
    const SocketXtPtr socket = NewSocketXt();
    Failing failing{.failWith = [](int number) { On::Listen().Fails(number); },
                    .operation = [&] { socket->Listen(); },
                    .head = XtHead("Listen", "cannot listen on socket", "::listen", ""),
                    .calls = {"listen(1001, 2)", "WSAGetLastError()"}};
    ExpectEachFailure(failing);
    socket->Bind("here", "4000");
    failing.head = XtHead("Listen", "cannot listen on socket", "::listen", "here : 4000");
    ExpectEachFailure(failing);
}

TEST_F(XtConnection, ConnectPassesEachAddressWithItsOwnLength) {
    const SocketXtPtr socket = NewSocketXt();
    On::Getaddrinfo().Returns(BothFamilies());
    On::Connect().Fails(10061).Passes();
    socket->Connect("host", "80");
    EXPECT_EQ(TranscriptWithout({"ComputerName"}),
              Followed(CallsTrying("connect"), {"freeaddrinfo(1)", "WSACleanup()"}));
}

TEST_F(XtConnection, EachFailureToConnectIsTold) {
    const SocketXtPtr socket = NewSocketXt();
    const auto connect = [&] { socket->Connect("host", "80"); };
    constexpr char description[] = "cannot connect local socket to a remote address";
    ExpectEachFailure({.failWith = [](int number) { On::Getaddrinfo().FailsReturning(8, number); },
                       .operation = connect,
                       .head = XtHead("Connect", description, "::getaddrinfo", "host : 80"),
                       .calls = {"WSAStartup(0x0101)", "ComputerName()", Hints, "WSAGetLastError()",
                                 "WSACleanup()"}});
    Lines calls =
        Followed(CallsTrying("connect"), {"WSAGetLastError()", "freeaddrinfo(1)", "WSACleanup()"});
    calls.insert(calls.begin() + 1, "ComputerName()");
    ExpectEachFailure(
        {.failWith =
             [](int number) {
                 On::Getaddrinfo().Returns(BothFamilies());
                 On::Connect().Fails(10047).Fails(number);
             },
         .operation = connect,
         .head = XtHead("Connect", description, "::connect", "SCRIPTED-HOST:0 : host:80"),
         .calls = calls});
}

TEST_F(XtConnection, AcceptHasRoomForAnyAddressAndPassesAllOfItOn) {
    const SocketXtPtr listener = BoundXt();
    SocketXtPtr accepted;
    VelBase::ReturnString host, port;
    On::Accept().ReturnsRaw(7777, SocketAddressBytesIpv6("2001:DB8::9", 4711));
    listener->Accept(accepted, host, port);
    EXPECT_EQ(Transcript(), (Lines{"WSAStartup(0x0101)", "accept(1001, 128)",
                                   "getnameinfo([2001:DB8:0:0:0:0:0:9]:4711, 128, 1025, 32, 10)",
                                   "WSACleanup()"}));
    EXPECT_EQ(accepted->GetHandle(), 7777U);
    EXPECT_STREQ(host.c_str(), "2001:DB8:0:0:0:0:0:9");
    EXPECT_STREQ(port.c_str(), "4711");
}

// Would-block too, unlike the classic socket's.
TEST_F(XtConnection, EachFailureToAcceptIsTold) {
    const SocketXtPtr listener = BoundXt();
    SocketXtPtr accepted;
    VelBase::ReturnString host, port;
    ExpectEachFailure({.failWith = [](int number) { On::Accept().Fails(number); },
                       .operation = [&] { listener->Accept(accepted, host, port); },
                       .head = XtHead("Accept", "cannot accept on local socket from remote address",
                                      "::accept", "here : 4000"),
                       .calls = {"WSAStartup(0x0101)", "accept(1001, 128)", "WSAGetLastError()",
                                 "WSACleanup()"}});
}

TEST_F(XtConnection, EachFailureToNameThePeerIsRecordedAlone) {
    const SocketXtPtr listener = BoundXt();
    SocketXtPtr accepted;
    VelBase::ReturnString host("earlier"), port("earlier");
    ExpectEachFailure({.failWith =
                           [&](int number) {
                               accepted = {};
                               On::Accept().Returns(7777, "10.0.0.9", 4711);
                               On::Getnameinfo().FailsReturning(8, number);
                           },
                       .operation = [&] { listener->Accept(accepted, host, port); },
                       .head = XtHead("Accept", "cannot get remote host name and port",
                                      "::getnameinfo", "no-ip : no-port"),
                       .calls = {"WSAStartup(0x0101)", "accept(1001, 128)",
                                 "getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)",
                                 "WSAGetLastError()", "WSACleanup()"},
                       .isThrown = false});
    EXPECT_EQ(accepted->GetHandle(), 7777U);
    EXPECT_STREQ(host.c_str(), "earlier");
}

// Required: the name of another call. The socket stays as it is.
TEST_F(XtConnection, EachFailureToCloseIsTold) {
    const SocketXtPtr socket = BoundXt();
    ExpectEachFailure(
        {.failWith = [&](int number) { On::Closesocket().Fails(number); },
         .operation = [&] { socket->Close(); },
         .head = XtHead("Close", "cannot close a socket", "::getaddrinfo", "here : 4000"),
         .calls = {"closesocket(1001)", "WSAGetLastError()"}});
    EXPECT_TRUE(socket->IsValid());
    On::Closesocket().Returns(0);
    socket->Close();
    EXPECT_FALSE(socket->IsValid());
    EXPECT_EQ(FailureOf([&] { socket->Close(); }).code, 10038);
    EXPECT_EQ(LastEventOf("closesocket").text, "closesocket(INVALID)");
}

}  // namespace
}  // namespace ModuleTests

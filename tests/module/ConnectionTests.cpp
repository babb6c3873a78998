// The classic socket: binding, listening, connecting, accepting.
#include "ModuleTest.h"

namespace ModuleTests {
namespace {

class Connection : public LayerTest {};

struct Endpoint {
    const char* host;
    unsigned short port;
};
constexpr Endpoint Endpoints[] = {{"10.1.2.3", 80},
                                  {"1.2.3.4", 0x1234},
                                  {"0.0.0.0", 0},
                                  {"255.254.253.252", 65535},
                                  {"127.0.0.1", 256}};

TEST_F(Connection, BindPassesSixteenBytesOfAddress) {
    const SocketPtr socket = NewSocket();
    for (const auto& [host, port] : Endpoints) {
        ClearTranscript();
        socket->Bind(OctetsOf(host), port);
        EXPECT_EQ(Transcript().size(), 1U);
        const Event call = LastEventOf("bind");
        EXPECT_EQ(call.bytes, SocketAddressBytes(host, port)) << call.text;
        EXPECT_EQ(call.numbers, (std::vector<long long>{1001, 16}));
    }
}

TEST_F(Connection, EachFailureToBindIsTold) {
    const SocketPtr socket = NewSocket();
    ExpectEachFailure({.failWith = [](int number) { On::Bind().Fails(number); },
                       .operation = [&] { socket->Bind(OctetsOf("10.0.0.1"), 80); },
                       .head = "VelNet::SocketImpl::Bind() - FAIL. Cannot bind to a socket: "
                               "10.0.0.1: 80",
                       .calls = {"bind(1001, 10.0.0.1:80, 16)", "WSAGetLastError()"}});
}

TEST_F(Connection, ListenIsForTwo) {
    const SocketPtr socket = NewSocket();
    EXPECT_EQ(socket->Listen(), 0);
    EXPECT_EQ(Transcript(), Lines{"listen(1001, 2)"});
    EXPECT_EQ(socket->GetStatus(), STATUS_LISTENING);
}

TEST_F(Connection, EachFailureToListenIsTold) {
    const SocketPtr socket = NewSocket();
    ExpectEachFailure({.failWith = [](int number) { On::Listen().Fails(number); },
                       .operation = [&] { socket->Listen(); },
                       .head = "VelNet::SocketImpl::Listen() - FAIL. Cannot listen to a socket",
                       .calls = {"listen(1001, 2)", "WSAGetLastError()"}});
    EXPECT_EQ(socket->GetStatus(), STATUS_NONE);
}

TEST_F(Connection, ConnectPassesSixteenBytesOfAddressAndAsksForBothEnds) {
    for (const auto& [host, port] : Endpoints) {
        const SocketPtr socket = NewSocket();
        socket->Connect(OctetsOf(host), port);
        EXPECT_EQ(Transcript().size(), 3U);
        EXPECT_EQ(LastEventOf("connect").bytes, SocketAddressBytes(host, port));
        EXPECT_EQ(LastEventOf("connect").numbers.back(), 16);
        EXPECT_EQ(CountOf("getsockname"), 1);
        EXPECT_EQ(Transcript().back().substr(0, 11), "getpeername");
    }
}

TEST_F(Connection, ConnectRecordsTheEndsThatTheSystemTells) {
    const SocketPtr socket = NewSocket();
    Loopback::EnableAllRouters();
    On::Getsockname().Returns("10.1.2.3", 50123);
    On::Getpeername().Returns("10.1.2.9", 8080);
    socket->Connect(OctetsOf("10.0.0.1"), 80);
    EXPECT_EQ(TakeRecords(),
              (Records{{Loopback::ConnectionTrace,
                        u"Connected, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 "
                        u"(8080)"}}));
}

TEST_F(Connection, EachFailureToConnectIsTold) {
    const SocketPtr socket = NewSocket();
    ExpectEachFailure({.failWith = [](int number) { On::Connect().Fails(number); },
                       .operation = [&] { socket->Connect(OctetsOf("10.0.0.1"), 80); },
                       .head = "VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: "
                               "10.0.0.1:80",
                       .calls = {"connect(1001, 10.0.0.1:80, 16)", "WSAGetLastError()"}});
    EXPECT_EQ(socket->GetStatus(), STATUS_NONE);
}

TEST_F(Connection, EachFailureToNameAnEndAfterConnectingIsTold) {
    const SocketPtr socket = NewSocket();
    const auto connect = [&] { socket->Connect(OctetsOf("10.0.0.1"), 80); };
    ExpectEachFailure({.failWith = [](int number) { On::Getsockname().Fails(number); },
                       .operation = connect,
                       .head = "VelNet::SocketImpl::Send() - FAIL. The ::getsockname failed",
                       .calls = {"connect(1001, 10.0.0.1:80, 16)", "getsockname(1001, 16)",
                                 "WSAGetLastError()"}});
    ExpectEachFailure({.failWith = [](int number) { On::Getpeername().Fails(number); },
                       .operation = connect,
                       .head = "VelNet::SocketImpl::Send() - FAIL. The ::getpeername failed",
                       .calls = {"connect(1001, 10.0.0.1:80, 16)", "getsockname(1001, 16)",
                                 "getpeername(1001, 16)", "WSAGetLastError()"}});
}

TEST_F(Connection, AcceptHasRoomForSixteenBytesAndAsksForTheListenersEnd) {
    const SocketPtr listener = NewSocket();
    SocketAddress remote;
    Loopback::EnableAllRouters();
    On::Accept().Returns(7777, "10.1.2.9", 50123);
    On::Getsockname().Returns("0.0.0.0", 80);
    const SocketPtr accepted = listener->Accept(remote);
    Loopback::EnableOnly({});
    EXPECT_EQ(Lines({Transcript()[0], Transcript()[1]}),
              (Lines{"accept(1001, 16)", "getsockname(1001, 16)"}));
    EXPECT_EQ(TextOf(remote), "10.1.2.9:50123");
    EXPECT_EQ(accepted->GetStatus(), STATUS_IDLE);
    EXPECT_EQ(LastEventOf("ioctlsocket").text, "ioctlsocket(7777, 0x4004667F)");
    EXPECT_EQ(TakeRecords(),
              (Records{{Loopback::ConnectionTrace,
                        u"Connected, Local address: 0.0.0.0 (80), Remote address: 10.1.2.9 "
                        u"(50123)"}}));
}

TEST_F(Connection, NothingToAcceptIsNoFailure) {
    const SocketPtr listener = NewSocket();
    SocketAddress remote(OctetsOf("10.0.0.1"), 80);
    Loopback::EnableAllRouters();
    for (const int number : {10035, 11}) {
        ClearTranscript();
        On::Accept().Fails(number);
        EXPECT_FALSE(listener->Accept(remote));
        EXPECT_EQ(Transcript(), (Lines{"accept(1001, 16)", "WSAGetLastError()"}));
        EXPECT_EQ(TextOf(remote), "10.0.0.1:80");
    }
    EXPECT_EQ(TakeRecords(), Records());
}

TEST_F(Connection, EachOtherFailureToAcceptIsTold) {
    const SocketPtr listener = NewSocket();
    SocketAddress remote;
    // Required: the label of SocketAPI.
    ExpectEachFailure({.failWith = [](int number) { On::Accept().Fails(number); },
                       .operation = [&] { listener->Accept(remote); },
                       .head = "VelNet::SocketAPI::Accept() - FAIL. Cannot accept a connection",
                       .calls = {"accept(1001, 16)", "WSAGetLastError()"}},
                      ErrorNumbersWithout({10035, 11}));
}

TEST_F(Connection, AcceptedSocketIsClosedWhenTheListenersEndHasNoName) {
    const SocketPtr listener = NewSocket();
    SocketAddress remote;
    On::Accept().Returns(7777, "10.1.2.9", 50123);
    On::Getsockname().Fails(10050);
    EXPECT_EQ(FailureOf([&] { listener->Accept(remote); }),
              FailureWith("VelNet::SocketImpl::Send() - FAIL. The ::getsockname failed", 10050));
    EXPECT_EQ(LastEventOf("closesocket").text, "closesocket(7777)");
}

}  // namespace
}  // namespace ModuleTests

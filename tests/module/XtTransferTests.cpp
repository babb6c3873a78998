// The extended socket: sending and receiving, with and without a connection.
#include <climits>

#include "ModuleTest.h"

namespace ModuleTests {
namespace {

class XtTransfer : public LayerTest {};

constexpr int Lengths[] = {0, 1, 1000, INT_MAX, -1, INT_MIN};
constexpr char Resolution[] = "getaddrinfo(\"host\", \"80\", {0, 0, 2, 17})";

TEST_F(XtTransfer, SendsByOneCallWithoutFlags) {
    const SocketXtPtr socket = NewSocketXt();
    EXPECT_EQ(socket->Send("abcdef", 4), 4);
    EXPECT_EQ(Transcript(), Lines{"send(1001, \"abcd\", 4, 0)"});
    for (const int length : Lengths) {
        On::Send().Returns(3);
        EXPECT_EQ(socket->Send(nullptr, length), 3);
        EXPECT_EQ(LastEventOf("send").text, "send(1001, null, " + std::to_string(length) + ", 0)");
    }
}

TEST_F(XtTransfer, SendThatWouldBlockIsZeroWithoutARecord) {
    const SocketXtPtr socket = NewSocketXt();
    Loopback::EnableAllRouters();
    On::Send().Fails(10035);
    EXPECT_EQ(socket->Send("abc", 3), 0);
    EXPECT_EQ(Transcript(), (Lines{"send(1001, \"abc\", 3, 0)", "WSAGetLastError()"}));
    EXPECT_EQ(TakeRecords(), Records());
}

TEST_F(XtTransfer, EachOtherFailureToSendIsTold) {
    const SocketXtPtr socket = NewSocketXt();
    socket->Bind("here", "4000");
    ExpectEachFailure({.failWith = [](int number) { On::Send().Fails(number); },
                       .operation = [&] { socket->Send("abc", 3); },
                       .head = XtHead("Send", "send on socket failed", "::send", "here:4000 : :"),
                       .calls = {"send(1001, \"abc\", 3, 0)", "WSAGetLastError()"}},
                      ErrorNumbersWithout({10035}));
}

TEST_F(XtTransfer, ReceivesByOneCallWithoutFlags) {
    const SocketXtPtr socket = NewSocketXt();
    char buffer[8] = {};
    On::Recv().Delivers("abc");
    EXPECT_EQ(socket->Receive(buffer, 8), 3);
    EXPECT_EQ(Transcript(), Lines{"recv(1001, 8, 0)"});
    EXPECT_EQ(LastEventOf("recv").pointer, buffer);
    for (const int length : Lengths) {
        On::Recv().Returns(1);
        EXPECT_EQ(socket->Receive(nullptr, length), 1);
        EXPECT_EQ(LastEventOf("recv").text, "recv(1001, " + std::to_string(length) + ", 0)");
    }
}

// Would-block too, unlike Send's.
TEST_F(XtTransfer, EachFailureToReceiveIsTold) {
    const SocketXtPtr socket = NewSocketXt();
    char buffer[8];
    ExpectEachFailure({.failWith = [](int number) { On::Recv().Fails(number); },
                       .operation = [&] { socket->Receive(buffer, 8); },
                       .head = XtHead("Receive", "recieve on socket failed", "::recv", ": : :"),
                       .calls = {"recv(1001, 8, 0)", "WSAGetLastError()"}});
}

TEST_F(XtTransfer, EndOfTheConnectionIsToldWithTheLocalTexts) {
    const SocketXtPtr socket = NewSocketXt();
    socket->Bind("here", "4000");
    ClearTranscript();
    char buffer[8];
    On::Recv().Returns(0);
    EXPECT_EQ(FailureOf([&] { socket->Receive(buffer, 8); }),
              FailureWith(XtHead("Receive",
                                 "::recv could not be completed because the connection has been "
                                 "closed",
                                 "::recv", "here: : 4000"),
                          -1));
    EXPECT_EQ(Transcript(), Lines{"recv(1001, 8, 0)"});
}

TEST_F(XtTransfer, SendToPassesEachAddressWithItsOwnLengthUntilOneTakesTheDatagram) {
    const SocketXtPtr socket = NewSocketXt(Socket::SOCKET_DATAGRAM);
    On::Getaddrinfo().Returns({{23, "2001:DB8::1", 80}, {2, "10.0.0.1", 80}, {2, "10.0.0.2", 80}});
    On::Sendto().Fails(10047).Passes();
    EXPECT_EQ(socket->SendTo("abcdef", 3, "host", "80"), 3);
    EXPECT_EQ(Transcript(), (Lines{"WSAStartup(0x0101)", Resolution,
                                   "sendto(1001, \"abc\", 3, 0, [2001:DB8:0:0:0:0:0:1]:80, 28)",
                                   "sendto(1001, \"abc\", 3, 0, 10.0.0.1:80, 16)",
                                   "freeaddrinfo(1)", "WSACleanup()"}));
    On::Getaddrinfo().Returns({{99, "abcde"}});
    socket->SendTo("abc", 2, "host", "80");
    EXPECT_EQ(LastEventOf("sendto").text, "sendto(1001, \"ab\", 2, 0, 0x6162636465, 5)");
}

TEST_F(XtTransfer, SendToPassesEveryLengthOn) {
    const SocketXtPtr socket = NewSocketXt(Socket::SOCKET_DATAGRAM);
    for (const int length : Lengths) {
        On::Sendto().Returns(0);
        EXPECT_EQ(socket->SendTo(nullptr, length, SPECIAL_LOOPBACK, "80"), 0);
        EXPECT_EQ(LastEventOf("sendto").text,
                  "sendto(1001, null, " + std::to_string(length) + ", 0, 10.0.0.1:80, 16)");
    }
}

TEST_F(XtTransfer, EachFailureToSendADatagramIsTold) {
    const SocketXtPtr socket = NewSocketXt(Socket::SOCKET_DATAGRAM);
    const auto send = [&] { socket->SendTo("abc", 3, "host", "80"); };
    constexpr char description[] = "cannot sendto using connectionless socket";
    ExpectEachFailure(
        {.failWith = [](int number) { On::Getaddrinfo().FailsReturning(8, number); },
         .operation = send,
         .head = XtHead("SendTo", description, "::getaddrinfo", "host : 80"),
         .calls = {"WSAStartup(0x0101)", Resolution, "WSAGetLastError()", "WSACleanup()"}});
    ExpectEachFailure(
        {.failWith = [](int number) { On::Sendto().Fails(number); },
         .operation = send,
         .head = XtHead("SendTo", description, "::sendto", "host : 80"),
         .calls = {"WSAStartup(0x0101)", Resolution, "sendto(1001, \"abc\", 3, 0, 10.0.0.1:80, 16)",
                   "WSAGetLastError()", "freeaddrinfo(1)", "WSACleanup()"}});
}

TEST_F(XtTransfer, RecvFromHasRoomForAnyAddressAndPassesAllOfItOn) {
    struct Kind {
        Socket::SOCKET_TYPE type;
        const char* flags;
    };
    for (const auto& [type, flags] :
         {Kind{Socket::SOCKET_DATAGRAM, "26"}, Kind{Socket::SOCKET_STREAM, "10"}}) {
        const SocketXtPtr socket = NewSocketXt(type);
        const std::string handle = std::to_string(socket->GetHandle());
        char buffer[8] = {};
        VelBase::ReturnString host, port;
        On::Recvfrom().Delivers("abc", "10.0.0.9", 4711);
        EXPECT_EQ(socket->RecvFrom(buffer, 8, host, port), 3);
        EXPECT_EQ(Transcript(),
                  (Lines{"WSAStartup(0x0101)", "recvfrom(" + handle + ", 8, 0, 128)",
                         std::string("getnameinfo(10.0.0.9:4711, 128, 1025, 32, ") + flags + ")",
                         "WSACleanup()"}));
        EXPECT_STREQ(buffer, "abc");
        EXPECT_STREQ(host.c_str(), "10.0.0.9");
        EXPECT_STREQ(port.c_str(), "4711");
    }
}

TEST_F(XtTransfer, RecvFromPassesEveryLengthOn) {
    const SocketXtPtr socket = NewSocketXt(Socket::SOCKET_DATAGRAM);
    VelBase::ReturnString host, port;
    for (const int length : Lengths) {
        On::Recvfrom().Returns(0);
        EXPECT_EQ(socket->RecvFrom(nullptr, length, host, port), 0);
        EXPECT_EQ(LastEventOf("recvfrom").text,
                  "recvfrom(1001, " + std::to_string(length) + ", 0, 128)");
    }
}

TEST_F(XtTransfer, EachFailureToReceiveADatagramIsTold) {
    const SocketXtPtr socket = NewSocketXt(Socket::SOCKET_DATAGRAM);
    char buffer[8];
    VelBase::ReturnString host("earlier"), port("earlier");
    ExpectEachFailure({.failWith = [](int number) { On::Recvfrom().Fails(number); },
                       .operation = [&] { socket->RecvFrom(buffer, 8, host, port); },
                       .head = XtHead("RecvFrom", "cannot recvfrom using connectionless socket",
                                      "::recvfrom", "no-ip : no-port"),
                       .calls = {"WSAStartup(0x0101)", "recvfrom(1001, 8, 0, 128)",
                                 "WSAGetLastError()", "WSACleanup()"}});
    ExpectEachFailure({.failWith =
                           [](int number) {
                               On::Recvfrom().Delivers("abc", "10.0.0.9", 4711);
                               On::Getnameinfo().FailsReturning(8, number);
                           },
                       .operation = [&] { EXPECT_EQ(socket->RecvFrom(buffer, 8, host, port), 3); },
                       .head = XtHead("RecvFrom", "cannot get remote host and port",
                                      "::getnameinfo", "no-ip : no-port"),
                       .calls = {"WSAStartup(0x0101)", "recvfrom(1001, 8, 0, 128)",
                                 "getnameinfo(10.0.0.9:4711, 128, 1025, 32, 26)",
                                 "WSAGetLastError()", "WSACleanup()"},
                       .isThrown = false});
    EXPECT_STREQ(host.c_str(), "earlier");
}

}  // namespace
}  // namespace ModuleTests

// The classic socket: sending and receiving.
#include <climits>

#include "ModuleTest.h"

namespace ModuleTests {
namespace {

class Transfer : public LayerTest {};

constexpr int Lengths[] = {0, 1, 1000, INT_MAX, -1, INT_MIN};

TEST_F(Transfer, SendsByOneCallWithoutFlags) {
    const SocketPtr socket = NewSocket();
    const char buffer[] = "abcdef";
    EXPECT_EQ(socket->Send(buffer, 4), 4);
    EXPECT_EQ(Transcript(), Lines{"send(1001, \"abcd\", 4, 0)"});
    EXPECT_EQ(LastEventOf("send").pointer, buffer);
}

TEST_F(Transfer, SendPassesEveryLengthOnAndReturnsWhatTheSystemDoes) {
    const SocketPtr socket = NewSocket();
    for (const int length : Lengths) {
        On::Send().Returns(3);
        EXPECT_EQ(socket->Send(nullptr, length), 3);
        EXPECT_EQ(LastEventOf("send").text, "send(1001, null, " + std::to_string(length) + ", 0)");
    }
    EXPECT_EQ(CountOf("send"), 6);
}

TEST_F(Transfer, SendThatWouldBlockIsZeroWithoutARecord) {
    const SocketPtr socket = NewSocket();
    Loopback::EnableAllRouters();
    On::Send().Fails(10035);
    EXPECT_EQ(socket->Send("abc", 3), 0);
    EXPECT_EQ(Transcript(), (Lines{"send(1001, \"abc\", 3, 0)", "WSAGetLastError()"}));
    EXPECT_EQ(TakeRecords(), Records());
}

TEST_F(Transfer, EachOtherFailureToSendIsTold) {
    const SocketPtr socket = NewSocket();
    ExpectEachFailure({.failWith = [](int number) { On::Send().Fails(number); },
                       .operation = [&] { socket->Send("abc", 3); },
                       .head = "VelNet::SocketImpl::Send() - FAIL. The ::send failed",
                       .calls = {"send(1001, \"abc\", 3, 0)", "WSAGetLastError()"}},
                      ErrorNumbersWithout({10035}));
}

TEST_F(Transfer, ReceivesByOneCallWithoutFlags) {
    const SocketPtr socket = NewSocket();
    char buffer[8] = {};
    On::Recv().Delivers("abc");
    EXPECT_EQ(socket->Receive(buffer, 8), 3);
    EXPECT_EQ(Transcript(), Lines{"recv(1001, 8, 0)"});
    EXPECT_EQ(LastEventOf("recv").pointer, buffer);
    EXPECT_STREQ(buffer, "abc");
}

TEST_F(Transfer, ReceivePassesEveryLengthOn) {
    const SocketPtr socket = NewSocket();
    for (const int length : Lengths) {
        On::Recv().Returns(1);
        EXPECT_EQ(socket->Receive(nullptr, length), 1);
        EXPECT_EQ(LastEventOf("recv").text, "recv(1001, " + std::to_string(length) + ", 0)");
    }
}

// Would-block too, unlike Send's.
TEST_F(Transfer, EachFailureToReceiveIsTold) {
    const SocketPtr socket = NewSocket();
    char buffer[8];
    ExpectEachFailure({.failWith = [](int number) { On::Recv().Fails(number); },
                       .operation = [&] { socket->Receive(buffer, 8); },
                       .head = "VelNet::SocketImpl::Receive() - FAIL. The ::recv failed",
                       .calls = {"recv(1001, 8, 0)", "WSAGetLastError()"}});
}

TEST_F(Transfer, EndOfTheConnectionIsToldWithoutANumber) {
    const SocketPtr socket = NewSocket();
    Loopback::EnableAllRouters();
    char buffer[8];
    On::Recv().Returns(0);
    EXPECT_EQ(FailureOf([&] { socket->Receive(buffer, 8); }), Loopback::ConnectionClosed());
    EXPECT_EQ(TakeRecords(), (Records{{Loopback::Error, Loopback::ConnectionClosed().text}}));
}

TEST_F(Transfer, RecordsTheBytesThatTheSystemTook) {
    const SocketPtr socket = NewSocket();
    On::Getsockname().Returns("10.1.2.3", 50123);
    On::Getpeername().Returns("10.1.2.9", 80);
    socket->Connect(OctetsOf("10.1.2.9"), 80);
    Loopback::EnableAllRouters();
    On::Send().Returns(2);
    EXPECT_EQ(socket->Send("abc", 3), 2);
    const std::u16string sent =
        u"Sent 2 bytes, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80)";
    EXPECT_EQ(TakeRecords(), (Records{{Loopback::PacketTrace, sent},
                                      {Loopback::VerbosePacketTrace, sent + u", data: 6162"}}));
}

}  // namespace
}  // namespace ModuleTests

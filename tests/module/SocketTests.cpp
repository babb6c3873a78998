// The classic socket: how it is made, its options, its questions, its end.
#include <cstring>

#include "ModuleTest.h"

namespace ModuleTests {
namespace {

class SocketLife : public LayerTest {};

constexpr char NotCreated[] = "VelNet::CreateSocket() - FAIL. The ::socket failed";
constexpr char NotClosed[] = "VelNet::SocketImpl::Close() - FAIL. Cannot close a socket";

// The bytes of the option that was set last.
unsigned int ValuePassed() {
    const std::string bytes = LastEventOf("setsockopt").bytes;
    unsigned int value = 0;
    EXPECT_EQ(bytes.size(), sizeof value);
    if (bytes.size() == sizeof value) std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

struct Setter {
    void (*set)(Socket&);
    const char* call;
    const char* failure;
};

constexpr Setter Setters[] = {
    {[](Socket& socket) { socket.SetReceiveTimeout(1500); },
     "setsockopt(1001, 0xFFFF, 0x1006, 1500, 4)",
     "VelNet::SocketImpl::SetReceiveTimeout() - FAIL. Cannot set Receive Timeout"},
    // Required: the label of the receive timeout.
    {[](Socket& socket) { socket.SetSendTimeout(2500); },
     "setsockopt(1001, 0xFFFF, 0x1005, 2500, 4)",
     "VelNet::SocketImpl::SetReceiveTimeout() - FAIL. Cannot set Send Timeout"},
    {[](Socket& socket) { socket.SetReuseAddress(); }, "setsockopt(1001, 0xFFFF, 0x4, 1, 4)",
     "VelNet::SocketImpl::SetReuseAddress() - FAIL. Cannot set Reuse Address"},
};

TEST_F(SocketLife, IsMadeByOneCallWithTypeAndProtocolAsTheSystemHasThem) {
    struct Kind {
        int type, protocol;
        const char* call;
    };
    for (const Kind& kind : {Kind{0, 0, "socket(2, 1, 6)"}, Kind{1, 1, "socket(2, 2, 17)"},
                             Kind{1, 0, "socket(2, 2, 6)"}, Kind{0, 1, "socket(2, 1, 17)"},
                             Kind{2, 2, "socket(2, 0, 0)"}, Kind{-1, 17, "socket(2, 0, 0)"}}) {
        ClearTranscript();
        const SocketPtr socket = CreateSocket(static_cast<Socket::SOCKET_TYPE>(kind.type),
                                              static_cast<Socket::SOCKET_PROTOCOL>(kind.protocol));
        EXPECT_EQ(Transcript(), Lines{kind.call});
    }
}

TEST_F(SocketLife, EachFailureToMakeItIsTold) {
    ExpectEachFailure(
        {.failWith = [](int number) { On::Socket().Fails(number); },
         .operation = [] { CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP); },
         .head = NotCreated,
         .calls = {"socket(2, 1, 6)", "WSAGetLastError()"}});
}

TEST_F(SocketLife, IsMadeNonBlockingByOneCall) {
    const SocketPtr socket = NewSocket();
    EXPECT_TRUE(socket->SetNonBlocking());
    EXPECT_EQ(Transcript(), Lines{"ioctlsocket(1001, 0x8004667E, 1)"});
    for (const int number : ErrorNumbers()) {
        On::Ioctlsocket().Fails(number);
        EXPECT_FALSE(socket->SetNonBlocking()) << number;
    }
    EXPECT_EQ(CountOf("WSAGetLastError"), 0);
}

TEST_F(SocketLife, AsksForWaitingBytesByOneCall) {
    const SocketPtr socket = NewSocket();
    for (const unsigned int count : {1U, 0x10000U, 0xFFFFFFFFU, 0U}) {
        On::Ioctlsocket().Returns(count);
        EXPECT_EQ(socket->IsDataAvailable(), count != 0);
    }
    On::Ioctlsocket().Fails(10038);
    EXPECT_FALSE(socket->IsDataAvailable());
    EXPECT_EQ(Transcript(), Lines(5, "ioctlsocket(1001, 0x4004667F)"));
}

TEST_F(SocketLife, OptionsArePassedWithLevelNumberValueAndLength) {
    const SocketPtr socket = NewSocket();
    for (const Setter& setter : Setters) {
        ClearTranscript();
        setter.set(*socket);
        EXPECT_EQ(Transcript(), Lines{setter.call});
    }
}

TEST_F(SocketLife, TimeOutsArePassedAsTheyStand) {
    const SocketPtr socket = NewSocket();
    for (const unsigned int milliseconds : {0U, 1U, 999U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        socket->SetReceiveTimeout(milliseconds);
        EXPECT_EQ(ValuePassed(), milliseconds);
        socket->SetSendTimeout(milliseconds);
        EXPECT_EQ(ValuePassed(), milliseconds);
    }
}

TEST_F(SocketLife, EachFailureToSetAnOptionIsRecordedAlone) {
    const SocketPtr socket = NewSocket();
    for (const Setter& setter : Setters)
        ExpectEachFailure({.failWith = [](int number) { On::Setsockopt().Fails(number); },
                           .operation = [&] { setter.set(*socket); },
                           .head = setter.failure,
                           .calls = {setter.call, "WSAGetLastError()"},
                           .isThrown = false});
}

TEST_F(SocketLife, AddressesAreReadIntoSixteenBytes) {
    const SocketPtr socket = NewSocket();
    On::Getsockname().Returns("10.1.2.3", 50123);
    EXPECT_EQ(TextOf(socket->GetLocalAddress()), "10.1.2.3:50123");
    On::Getpeername().Returns("10.1.2.9", 80);
    EXPECT_EQ(TextOf(socket->GetRemoteAddress()), "10.1.2.9:80");
    EXPECT_EQ(Transcript(), (Lines{"getsockname(1001, 16)", "getpeername(1001, 16)"}));
}

// Required: the label of Send.
TEST_F(SocketLife, EachFailureToReadAnAddressIsTold) {
    const SocketPtr socket = NewSocket();
    ExpectEachFailure({.failWith = [](int number) { On::Getsockname().Fails(number); },
                       .operation = [&] { socket->GetLocalAddress(); },
                       .head = "VelNet::SocketImpl::Send() - FAIL. The ::getsockname failed",
                       .calls = {"getsockname(1001, 16)", "WSAGetLastError()"}});
    ExpectEachFailure({.failWith = [](int number) { On::Getpeername().Fails(number); },
                       .operation = [&] { socket->GetRemoteAddress(); },
                       .head = "VelNet::SocketImpl::Send() - FAIL. The ::getpeername failed",
                       .calls = {"getpeername(1001, 16)", "WSAGetLastError()"}});
}

TEST_F(SocketLife, IsClosedByOneCallAndHasNoHandleThen) {
    const SocketPtr socket = NewSocket();
    socket->Close();
    EXPECT_FALSE(socket->IsValid());
    socket->Close();
    EXPECT_EQ(Transcript(),
              (Lines{"closesocket(1001)", "closesocket(INVALID)", "WSAGetLastError()"}));
}

TEST_F(SocketLife, IsClosedWithItsLastReference) {
    NewSocket();
    { const SocketPtr socket = CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP); }
    EXPECT_EQ(LastEventOf("closesocket").text, "closesocket(1002)");
}

// The handle is forgotten all the same, so each time it is another socket.
TEST_F(SocketLife, EachFailureToCloseIsRecordedAlone) {
    const SocketPtr socket = NewSocket();
    socket->Close();
    ExpectEachFailure({.failWith = [](int number) { On::Closesocket().Fails(number); },
                       .operation = [&] { socket->Close(); },
                       .head = NotClosed,
                       .calls = {"closesocket(INVALID)", "WSAGetLastError()"},
                       .isThrown = false});
    const SocketPtr refused = NewSocket();
    On::Closesocket().Fails(10050);
    refused->Close();
    EXPECT_FALSE(refused->IsValid());
}

}  // namespace
}  // namespace ModuleTests

// The classic socket with datagrams.
#include <loopback/LoopbackTest.h>
#include <support/Wine.h>

namespace Loopback {
namespace {

using VelNet::Socket;

class Datagram : public LoopbackTest {};

// Two sockets that are each other's peer.
Connection DatagramPair() {
    Connection pair = {Bound(DatagramSocket()), Bound(DatagramSocket())};
    pair.client->Connect(LocalHost(), PortOf(*pair.server));
    pair.server->Connect(LocalHost(), PortOf(*pair.client));
    return pair;
}

Failure TooLong() {
    return ReceiveFailed(10040, u"Message too long");
}

TEST_F(Datagram, TwoSocketsExchangeThem) {
    const Connection pair = DatagramPair();
    EXPECT_EQ(pair.client->Send("question", 8), 8);
    EXPECT_EQ(ReceiveSome(*pair.server), "question");
    EXPECT_EQ(pair.server->Send("answer", 6), 6);
    EXPECT_EQ(ReceiveSome(*pair.client), "answer");
    EXPECT_EQ(pair.client->GetRemoteAddress().GetPort(), PortOf(*pair.server));
}

TEST_F(Datagram, ConnectAndTransferAreRecorded) {
    EnableAllRouters();
    const Connection pair = DatagramPair();
    const std::u16string client = EndpointsOf(PortOf(*pair.client), PortOf(*pair.server));
    const std::u16string server = EndpointsOf(PortOf(*pair.server), PortOf(*pair.client));
    pair.client->Send("abc", 3);
    ReceiveSome(*pair.server);
    EXPECT_EQ(Sink().Take(),
              (Records{
                  {ConnectionTrace, u"Connected, " + client},
                  {ConnectionTrace, u"Connected, " + server},
                  {PacketTrace, u"Sent 3 bytes, " + client},
                  {VerbosePacketTrace, u"Sent 3 bytes, " + client + u", data: 616263"},
                  {PacketTrace, u"Received 3 bytes, " + server},
                  {VerbosePacketTrace, u"Received 3 bytes, " + server + u", data: 616263"},
              }));
}

TEST_F(Datagram, EachIsReceivedByItself) {
    const Connection pair = DatagramPair();
    pair.client->Send("one", 3);
    pair.client->Send("two", 3);
    EXPECT_EQ(ReceiveSome(*pair.server), "one");
    EXPECT_EQ(ReceiveSome(*pair.server), "two");
}

TEST_F(Datagram, OneThatExactlyFitsIsReceived) {
    const Connection pair = DatagramPair();
    pair.client->Send("abc", 3);
    EXPECT_EQ(ReceiveSome(*pair.server, 3), "abc");
}

TEST_F(Datagram, OneThatIsTooLongIsAFailureWithTheBufferFilled) {
    const Connection pair = DatagramPair();
    EnableOnly({Error, PacketTrace});
    pair.client->Send("too long", 8);
    Sink().Take();
    char buffer[] = "....";
    EXPECT_EQ(FailureOf([&] { pair.server->Receive(buffer, 3); }), TooLong());
    EXPECT_STREQ(buffer, "too.");
    EXPECT_EQ(Sink().Take(), (Records{{Error, TooLong().text}}));

    pair.client->Send("next", 4);
    EXPECT_EQ(ReceiveSome(*pair.server), "next");
}

// Receive has no other way to tell of nothing.
TEST_F(Datagram, AnEmptyOneLooksLikeAnEndAndIsNone) {
    const Connection pair = DatagramPair();
    EXPECT_EQ(pair.client->Send("", 0), 0);
    EXPECT_EQ(FailureOfReceive(*pair.server), ConnectionClosed());
    ExpectExchange(*pair.client, *pair.server);
}

TEST_F(Datagram, OneOfMoreThanTheSystemCarriesIsRefused) {
    const Connection pair = DatagramPair();
    const std::string bytes(65508, 'x');
    EXPECT_EQ(FailureOf([&] { pair.client->Send(bytes.data(), 65508); }),
              SystemFailure(u"VelNet::SocketImpl::Send() - FAIL. The ::send failed", 10040,
                            u"Message too long"));
    EXPECT_EQ(pair.client->Send(bytes.data(), 65507), 65507);
    EXPECT_EQ(ReceiveSome(*pair.server, 65507), std::string(65507, 'x'));
}

TEST_F(Datagram, WithoutAPeerNothingCanBeSent) {
    const SocketPtr socket = Bound(DatagramSocket());
    const int code = FailureOf([&] { socket->Send("x", 1); }).code;
    EXPECT_TRUE(code == 10057 || (Support::RunsOnWine() && code == 10022)) << code;
}

TEST_F(Datagram, APeerWithoutAPortIsRefusedAndNothingIsConnected) {
    EnableAllRouters();
    const SocketPtr socket = DatagramSocket();
    const Failure failure = FailureOf([&] { socket->Connect(LocalHost(), 0); });
    // Wine connects, and fails only when it is asked for the peer.
    if (Support::RunsOnWine() && failure.code == 10057) return;
    EXPECT_EQ(failure, SystemFailure(u"VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a "
                                     u"socket: 127.0.0.1:0",
                                     10049, u"Cannot assign requested address"));
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    EXPECT_EQ(socket->GetStatus(), VelNet::STATUS_NONE);
    EXPECT_EQ(FailureOf([&] { socket->GetRemoteAddress(); }).code, 10057);
    EXPECT_EQ(FailureOf([&] { socket->Send("x", 1); }).code, 10057);
    const SocketPtr peer = Bound(DatagramSocket());
    socket->Connect(LocalHost(), PortOf(*peer));
    EXPECT_EQ(socket->Send("question", 8), 8);
    EXPECT_EQ(ReceiveSome(*peer), "question");
}

TEST_F(Datagram, AnotherPeerTakesThePlaceOfTheFirst) {
    const Connection pair = DatagramPair();
    const SocketPtr other = Bound(DatagramSocket());
    const unsigned short port = PortOf(*pair.client);
    other->Connect(LocalHost(), port);
    pair.client->Connect(LocalHost(), PortOf(*other));
    EXPECT_EQ(PortOf(*pair.client), port);
    EXPECT_EQ(pair.client->GetRemoteAddress().GetPort(), PortOf(*other));
    pair.server->Send("from the first", 14);
    ExpectExchange(*pair.client, *other);
}

TEST_F(Datagram, StatusTellsOfWaitingOnes) {
    const Connection pair = DatagramPair();
    EXPECT_EQ(pair.server->GetStatus(), VelNet::STATUS_IDLE);
    pair.client->Send("x", 1);
    EXPECT_TRUE(
        Eventually([&] { return pair.server->GetStatus() == VelNet::STATUS_DATA_PENDING; }));
    ReceiveSome(*pair.server);
    EXPECT_EQ(pair.server->GetStatus(), VelNet::STATUS_IDLE);
}

// The number 10043 stands in the table of errors without its offset, so it is unknown.
Failure ProtocolRefused() {
    return {u"VelNet::CreateSocket() - FAIL. The ::socket failed, errno = \u273B Unknown error",
            -1};
}

TEST_F(Datagram, ThePairsOfTypeAndProtocolThatDoNotMatchAreRefused) {
    EnableOnly({Error});
    EXPECT_EQ(FailureOf([] { CreateSocket(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_TCP); }),
              ProtocolRefused());
    EXPECT_EQ(FailureOf([] { CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_UDP); }),
              ProtocolRefused());
    EXPECT_EQ(Sink().Take(),
              (Records{{Error, ProtocolRefused().text}, {Error, ProtocolRefused().text}}));
}

// What is not named is left to the system, which then uses the other of the two.
TEST_F(Datagram, AnUnknownTypeOrProtocolIsLeftToTheSystem) {
    const SocketPtr listener = Listening();
    const SocketPtr byProtocol =
        VelNet::CreateSocket(static_cast<Socket::SOCKET_TYPE>(7), Socket::PROTOCOL_TCP);
    const SocketPtr byType =
        VelNet::CreateSocket(Socket::SOCKET_STREAM, static_cast<Socket::SOCKET_PROTOCOL>(7));
    for (const SocketPtr* client : {&byProtocol, &byType}) {
        (*client)->Connect(LocalHost(), PortOf(*listener));
        ExpectExchange(**client, *Accepted(*listener));
    }
}

}  // namespace
}  // namespace Loopback

// What a socket tells of itself, and how it ends.
#include <loopback/LoopbackTest.h>
#include <loopback/ThisProcess.h>

#include <utility>

namespace Loopback {
namespace {

class SocketLife : public LoopbackTest {};

const std::u16string DisconnectedFromNowhere =
    u"Disconnected, " + Endpoints("0.0.0.0", 0, "0.0.0.0", 0);

TEST_F(SocketLife, StatusFollowsTheSocket) {
    const SocketPtr listener = StreamSocket();
    EXPECT_EQ(listener->GetStatus(), 0);
    listener->Bind(LocalHost(), 0);
    EXPECT_EQ(listener->GetStatus(), 0);
    listener->Listen();
    EXPECT_EQ(listener->GetStatus(), 1);

    const Connection connection = ConnectedThrough(*listener);
    EXPECT_EQ(listener->GetStatus(), 1);
    EXPECT_EQ(connection.client->GetStatus(), 3);
    EXPECT_EQ(connection.server->GetStatus(), 3);
    SendAll(*connection.client, "x");
    EXPECT_TRUE(Eventually([&] { return connection.server->GetStatus() == 2; }));
    EXPECT_TRUE(connection.server->IsDataAvailable());
    ReceiveExactly(*connection.server, 1);
    EXPECT_EQ(connection.server->GetStatus(), 3);
    EXPECT_FALSE(connection.server->IsDataAvailable());

    listener->Close();
    EXPECT_EQ(listener->GetStatus(), 0);
}

TEST_F(SocketLife, ASocketIsValidFromItsMakingToItsClose) {
    const SocketPtr socket = StreamSocket();
    EXPECT_TRUE(socket->IsValid());
    socket->Close();
    EXPECT_FALSE(socket->IsValid());
}

TEST_F(SocketLife, OnlyASocketItselfIsTheSameAndAllClosedOnesAre) {
    const Connection connection = Connected();
    VelNet::Socket& client = *connection.client;
    VelNet::Socket& server = *connection.server;
    EXPECT_TRUE(client.IsSameSocket(client));
    EXPECT_FALSE(client.IsSameSocket(server));
    client.Close();
    EXPECT_FALSE(client.IsSameSocket(server));
    EXPECT_FALSE(server.IsSameSocket(client));
    server.Close();
    EXPECT_TRUE(client.IsSameSocket(server));
}

TEST_F(SocketLife, ClosingAgainIsLoggedAsAFailureAndRecorded) {
    EnableAllRouters();
    const SocketPtr socket = StreamSocket();
    socket->Close();
    EXPECT_EQ(Sink().Take(), (Records{{ConnectionTrace, DisconnectedFromNowhere}}));
    socket->Close();
    EXPECT_EQ(Sink().Take(),
              (Records{{Error, u"VelNet::SocketImpl::Close() - FAIL. Cannot close a socket" +
                                   ErrorTail(10038, u"Socket operation on nonsocket")},
                       {ConnectionTrace, DisconnectedFromNowhere}}));
    EXPECT_FALSE(socket->IsValid());
}

// No number of a closed socket may reach somebody else's file.
TEST_F(SocketLife, AClosedSocketDoesNothingToTheNextOne) {
    const SocketPtr closed = StreamSocket();
    closed->Close();
    const Connection connection = Connected();
    closed->Close();
    EXPECT_EQ(FailureOfReceive(*closed), ReceiveFailed(10038, u"Socket operation on nonsocket"));
    EXPECT_FALSE(closed->IsDataAvailable());
    ExpectExchange(*connection.client, *connection.server);
}

TEST_F(SocketLife, TheLastReferenceClosesWithARecord) {
    Connection connection = Connected();
    const std::u16string endpoints =
        EndpointsOf(PortOf(*connection.server), PortOf(*connection.client));
    EnableOnly({ConnectionTrace});
    connection.server = SocketPtr();
    EXPECT_EQ(Sink().Take(), (Records{{ConnectionTrace, u"Disconnected, " + endpoints}}));
    EXPECT_EQ(FailureOfReceive(*connection.client), ConnectionClosed());
}

TEST_F(SocketLife, AnyReferenceKeepsItOpen) {
    Connection connection = Connected();
    VelNet::Socket* const server = connection.server.Get();
    server->AddRef();
    connection.server = SocketPtr();
    ExpectExchange(*connection.client, *server);
    server->Release();
    EXPECT_EQ(FailureOfReceive(*connection.client), ConnectionClosed());
}

TEST_F(SocketLife, AClosedOneEndsWithoutAnotherRecord) {
    EnableOnly({Error, ConnectionTrace});
    SocketPtr socket = StreamSocket();
    socket->Close();
    Sink().Take();
    socket = SocketPtr();
    EXPECT_EQ(Sink().Take(), Records{});
}

TEST_F(SocketLife, NoDescriptorIsLeftBehindByAnyWayToEnd) {
    const int before = ThisProcess::OpenDescriptors();
    {
        const SocketPtr listener = Listening();
        const Connection closed = ConnectedThrough(*listener);
        closed.client->Close();
        closed.server->Close();
        const Connection dropped = ConnectedThrough(*listener);
        const SocketPtr refused = StreamSocket();
        FailureOf([&] { refused->Bind(LocalHost(), PortOf(*listener)); });
        FailureOf(
            [&] { CreateSocket(VelNet::Socket::SOCKET_DATAGRAM, VelNet::Socket::PROTOCOL_TCP); });
        EXPECT_GT(ThisProcess::OpenDescriptors(), before);
    }
    EXPECT_EQ(ThisProcess::OpenDescriptors(), before);
}

}  // namespace
}  // namespace Loopback

// Sockets that do not block.
#include <loopback/LoopbackTest.h>
#include <support/Wine.h>

namespace Loopback {
namespace {

class NonBlocking : public LoopbackTest {
protected:
    NonBlocking() { EnableAllRouters(); }
};

Failure NothingToReceive() {
    return ReceiveFailed(10035, u"Resource temporarily unavailable");
}

TEST_F(NonBlocking, AcceptWithNothingPendingIsEmptyAndSilent) {
    const SocketPtr listener = Listening();
    EXPECT_TRUE(listener->SetNonBlocking());
    VelNet::SocketAddress remote({1, 2, 3, 4}, 5);
    EXPECT_FALSE(listener->Accept(remote));
    EXPECT_FALSE(listener->Accept(remote));
    EXPECT_EQ(remote.GetOctets(), VelNet::Octets(1, 2, 3, 4));
    EXPECT_EQ(remote.GetPort(), 5);
    EXPECT_EQ(Sink().Take(), Records{});
}

TEST_F(NonBlocking, AcceptTakesWhatIsPending) {
    const SocketPtr listener = Listening();
    EXPECT_TRUE(listener->SetNonBlocking());
    const Connection connection = ConnectedThrough(*listener);
    SendAll(*connection.client, "abc");
    EXPECT_TRUE(Eventually([&] { return connection.server->IsDataAvailable(); }));
    EXPECT_EQ(ReceiveExactly(*connection.server, 3), "abc");
}

TEST_F(NonBlocking, AnAcceptedSocketIsAsItsListener) {
    const SocketPtr listener = Listening();
    const Connection blocking = ConnectedThrough(*listener);
    EXPECT_TRUE(listener->SetNonBlocking());
    const Connection nonBlocking = ConnectedThrough(*listener);
    EXPECT_EQ(FailureOfReceive(*nonBlocking.server), NothingToReceive());
    blocking.server->SetReceiveTimeout(1);
    EXPECT_EQ(FailureOfReceive(*blocking.server), ReceiveFailed(10060, u"Connection timed out"));
}

TEST_F(NonBlocking, ReceiveWithNothingWaitingThrowsAndIsLogged) {
    const Connection connection = Connected();
    EXPECT_TRUE(connection.client->SetNonBlocking());
    Sink().Take();
    EXPECT_EQ(FailureOfReceive(*connection.client), NothingToReceive());
    EXPECT_EQ(Sink().Take(), (Records{{Error, NothingToReceive().text}}));
}

// Sends until the system takes no more, and returns how much it took.
std::size_t Fill(VelNet::Socket& socket) {
    const std::string bytes(65536, 'x');
    std::size_t total = 0;
    while (const int sent = socket.Send(bytes.data(), static_cast<int>(bytes.size()))) {
        total += static_cast<std::size_t>(sent);
    }
    return total;
}

TEST_F(NonBlocking, SendIntoAFullBufferIsZeroAndSilentAndGoesOnWhenThereIsRoom) {
    const Connection connection = Connected();
    VelNet::Socket& client = *connection.client;
    EXPECT_TRUE(client.SetNonBlocking());
    EnableOnly({});
    std::size_t waiting = Fill(client);
    EXPECT_GT(waiting, 0U);

    EnableAllRouters();
    Sink().Take();
    // Some of what was taken may still be on its way to the peer and make room.
    while (const int sent = client.Send("x", 1)) {
        waiting += static_cast<std::size_t>(sent);
        Sink().Take();
    }
    EXPECT_EQ(Sink().Take(), Records{});

    EnableOnly({Error});
    EXPECT_EQ(ReceiveExactly(*connection.server, waiting), std::string(waiting, 'x'));
    EXPECT_TRUE(Eventually([&] { return client.Send("y", 1) == 1; }));
    EXPECT_EQ(ReceiveExactly(*connection.server, 1), "y");
    EXPECT_EQ(Sink().Take(), Records{});
}

Failure ConnectFailed(unsigned short port, int number, std::u16string_view description) {
    return SystemFailure(
        u"VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: 127.0.0.1:" +
            Widen(std::to_string(port)),
        number, description);
}

TEST_F(NonBlocking, ConnectThrowsAndCompletesLater) {
    const SocketPtr listener = Listening();
    const unsigned short port = PortOf(*listener);
    const SocketPtr client = StreamSocket();
    EXPECT_TRUE(client->SetNonBlocking());
    const auto connect = [&] { client->Connect(LocalHost(), port); };

    const Failure begun = ConnectFailed(port, 10035, u"Resource temporarily unavailable");
    const Failure going = ConnectFailed(port, 10037, u"Operation already in progress");
    const Failure done = ConnectFailed(port, 10056, u"Socket is already connected");
    EXPECT_EQ(FailureOf(connect), begun);
    EXPECT_EQ(Sink().Take(), (Records{{Error, begun.text}}));
    EXPECT_EQ(client->GetStatus(), VelNet::STATUS_NONE);
    EXPECT_TRUE(Eventually([&] {
        const Failure failure = FailureOf(connect);
        if (failure == done) return true;
        EXPECT_EQ(failure, going);
        return false;
    }));

    const SocketPtr server = Accepted(*listener);
    EXPECT_EQ(client->GetRemoteAddress().GetPort(), port);
    SendAll(*client, "abc");
    EXPECT_EQ(ReceiveExactly(*server, 3), "abc");
}

TEST_F(NonBlocking, ARefusalOfAConnectIsNotTakenForAConnection) {
    const SocketPtr closedPort = Bound(StreamSocket());
    const SocketPtr client = StreamSocket();
    EXPECT_TRUE(client->SetNonBlocking());
    const unsigned short port = PortOf(*closedPort);
    for (int attempt = 0; attempt < 20; ++attempt) {
        const Failure failure = FailureOf([&] { client->Connect(LocalHost(), port); });
        EXPECT_TRUE(failure.code == 10035 || failure.code == 10037 || failure.code == 10061 ||
                    (Support::RunsOnWine() && failure.code == 10053))
            << testing::PrintToString(failure);
    }
    EXPECT_FALSE(client->IsDataAvailable());
}

TEST_F(NonBlocking, AClosedSocketCannotBeMadeNonBlockingAndSaysSoSilently) {
    const SocketPtr socket = StreamSocket();
    socket->Close();
    Sink().Take();
    EXPECT_FALSE(socket->SetNonBlocking());
    EXPECT_EQ(Sink().Take(), Records{});
}

}  // namespace
}  // namespace Loopback

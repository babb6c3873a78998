// Connections that come about, and those that do not.
#include <loopback/LoopbackTest.h>
#include <support/Wine.h>

namespace Loopback {
namespace {

class Connect : public LoopbackTest {
protected:
    Connect() { EnableOnly({Error}); }
};

Failure ConnectFailed(unsigned short port, int number, std::u16string_view description) {
    return SystemFailure(
        u"VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: 127.0.0.1:" +
            Widen(std::to_string(port)),
        number, description);
}

// A port that is taken, so that nobody else listens on it, and that nobody listens on.
TEST_F(Connect, ARefusalIsToldWithAddressPortAndNumber) {
    const SocketPtr silent = Bound(StreamSocket());
    const unsigned short port = PortOf(*silent);
    const SocketPtr client = StreamSocket();
    const Failure failure = FailureOf([&] { client->Connect(LocalHost(), port); });
    EXPECT_EQ(failure.text,
              u"VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: 127.0.0.1:" +
                  Widen(std::to_string(port)) + u", errno = \u274D Connection refused");
    EXPECT_EQ(failure.code, 10061);
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    EXPECT_EQ(client->GetStatus(), VelNet::STATUS_NONE);
}

TEST_F(Connect, AfterARefusalTheSameSocketConnectsElsewhere) {
    const SocketPtr silent = Bound(StreamSocket());
    const SocketPtr client = StreamSocket();
    EXPECT_EQ(FailureOf([&] { client->Connect(LocalHost(), PortOf(*silent)); }).code, 10061);
    const SocketPtr listener = Listening();
    const auto connect = [&] { client->Connect(LocalHost(), PortOf(*listener)); };
    // Wine connects at the second attempt only.
    if (Support::RunsOnWine()) {
        EXPECT_EQ(FailureOf(connect).code, 10053);
    }
    connect();
    const SocketPtr server = Accepted(*listener);
    ExpectExchange(*client, *server);
}

TEST_F(Connect, ASecondTimeIsRefusedAndTheConnectionGoesOn) {
    const SocketPtr listener = Listening();
    const Connection connection = ConnectedThrough(*listener);
    const unsigned short port = PortOf(*listener);
    EXPECT_EQ(FailureOf([&] { connection.client->Connect(LocalHost(), port); }),
              ConnectFailed(port, 10056, u"Socket is already connected"));
    ExpectExchange(*connection.client, *connection.server);
}

TEST_F(Connect, ASocketThatIsBoundKeepsItsPort) {
    const SocketPtr listener = Listening();
    const SocketPtr client = Bound(StreamSocket());
    const unsigned short port = PortOf(*client);
    client->Connect(LocalHost(), PortOf(*listener));
    const SocketPtr server = Accepted(*listener);
    EXPECT_EQ(server->GetRemoteAddress().GetPort(), port);
}

TEST_F(Connect, TwoConnectionsMayBePending) {
    const SocketPtr listener = Listening();
    const SocketPtr first = ConnectedTo(*listener);
    const SocketPtr second = ConnectedTo(*listener);
    const SocketPtr ofFirst = Accepted(*listener);
    const SocketPtr ofSecond = Accepted(*listener);
    ExpectExchange(*first, *ofFirst);
    ExpectExchange(*second, *ofSecond);
    EXPECT_EQ(ofFirst->GetRemoteAddress().GetPort(), PortOf(*first));
    EXPECT_EQ(ofSecond->GetRemoteAddress().GetPort(), PortOf(*second));
}

TEST_F(Connect, ListeningUnboundIsRefused) {
    const SocketPtr socket = StreamSocket();
    const Failure failure = FailureOf([&] { socket->Listen(); });
    EXPECT_EQ(failure,
              SystemFailure(u"VelNet::SocketImpl::Listen() - FAIL. Cannot listen to a socket",
                            10022, u"Invalid argument"));
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
}

TEST_F(Connect, AcceptingOnASocketThatDoesNotListenIsRefused) {
    const SocketPtr socket = Bound(StreamSocket());
    VelNet::SocketAddress remote;
    const Failure failure = FailureOf([&] { socket->Accept(remote); });
    EXPECT_EQ(failure,
              SystemFailure(u"VelNet::SocketAPI::Accept() - FAIL. Cannot accept a connection",
                            10022, u"Invalid argument"));
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
}

}  // namespace
}  // namespace Loopback

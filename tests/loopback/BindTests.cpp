// Local addresses, and the addresses of others.
#include <loopback/LoopbackTest.h>

#include <utility>

namespace Loopback {
namespace {

class Bind : public LoopbackTest {
protected:
    Bind() { EnableOnly({Error}); }
};

Failure BindFailed(std::string_view address, unsigned short port, int number,
                   std::u16string_view description) {
    return SystemFailure(u"VelNet::SocketImpl::Bind() - FAIL. Cannot bind to a socket: " +
                             Widen(std::string(address) + ": " + std::to_string(port)),
                         number, description);
}

Failure FailureOfBind(VelNet::Socket& socket, unsigned short port) {
    return FailureOf([&socket, port] { socket.Bind(LocalHost(), port); });
}

TEST_F(Bind, ThePortIsTheSystemsChoiceWhenItIsZero) {
    const SocketPtr one = Bound(StreamSocket());
    const SocketPtr other = Bound(StreamSocket());
    EXPECT_EQ(one->GetLocalAddress().GetOctets(), LocalHost());
    EXPECT_NE(PortOf(*one), 0);
    EXPECT_NE(PortOf(*one), PortOf(*other));
}

TEST_F(Bind, AllAddressesAreShownAsZeros) {
    const SocketPtr socket = StreamSocket();
    socket->Bind(AnyAddress(), 0);
    EXPECT_EQ(socket->GetLocalAddress().GetOctets(), AnyAddress());
    EXPECT_NE(PortOf(*socket), 0);
}

TEST_F(Bind, APortInUseIsRefused) {
    const SocketPtr listener = Listening();
    const unsigned short port = PortOf(*listener);
    const SocketPtr socket = StreamSocket();
    const Failure failure = FailureOfBind(*socket, port);
    EXPECT_EQ(failure, BindFailed("127.0.0.1", port, 10048, u"Address already in use"));
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    EXPECT_TRUE(socket->IsValid());
    ConnectedThrough(*listener);
}

TEST_F(Bind, AnAddressOfAnotherMachineIsRefused) {
    const SocketPtr socket = StreamSocket();
    const Failure failure = FailureOf([&] { socket->Bind({192, 0, 2, 1}, 4711); });
    EXPECT_EQ(failure, BindFailed("192.0.2.1", 4711, 10049, u"Cannot assign requested address"));
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
}

TEST_F(Bind, ASecondTimeIsRefused) {
    const SocketPtr socket = Bound(StreamSocket());
    EXPECT_EQ(FailureOfBind(*socket, 0), BindFailed("127.0.0.1", 0, 10022, u"Invalid argument"));
}

TEST_F(Bind, SocketsThatBothAllowReuseShareAPort) {
    const SocketPtr one = StreamSocket();
    one->SetReuseAddress();
    one->Bind(LocalHost(), 0);
    const SocketPtr other = StreamSocket();
    other->SetReuseAddress();
    other->Bind(LocalHost(), PortOf(*one));
    EXPECT_EQ(PortOf(*other), PortOf(*one));
    EXPECT_EQ(Sink().Take(), Records{});
}

TEST_F(Bind, ReuseByTheSecondSocketAloneIsRefused) {
    const SocketPtr one = Bound(StreamSocket());
    const unsigned short port = PortOf(*one);
    const SocketPtr other = StreamSocket();
    other->SetReuseAddress();
    EXPECT_EQ(FailureOfBind(*other, port),
              BindFailed("127.0.0.1", port, 10013, u"Permission denied"));
}

TEST_F(Bind, AnUnboundSocketHasNoLocalAddress) {
    const SocketPtr socket = StreamSocket();
    const Failure failure = FailureOf([&] { socket->GetLocalAddress(); });
    EXPECT_EQ(failure, SystemFailure(u"VelNet::SocketImpl::Send() - FAIL. The ::getsockname failed",
                                     10022, u"Invalid argument"));
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
}

TEST_F(Bind, AnUnconnectedSocketHasNoRemoteAddress) {
    const SocketPtr socket = Bound(StreamSocket());
    EXPECT_EQ(FailureOf([&] { socket->GetRemoteAddress(); }),
              SystemFailure(u"VelNet::SocketImpl::Send() - FAIL. The ::getpeername failed", 10057,
                            u"Socket is not connected"));
}

// The server's side of a connection that it closed first keeps its port for a while.
void CloseFirst(SocketPtr server, SocketPtr client) {
    server->Close();
    EXPECT_EQ(FailureOfReceive(*client), ConnectionClosed());
    client->Close();
}

// Serves one connection, closes it and starts again on the same port; false when another process
// has taken the port meanwhile, or when it is still refused.
template <class Prepare>
bool CanRestart(Prepare prepare) {
    SocketPtr listener = StreamSocket();
    prepare(*listener);
    listener->Bind(LocalHost(), 0);
    listener->Listen();
    const unsigned short port = PortOf(*listener);
    Connection connection = ConnectedThrough(*listener);
    listener->Close();
    CloseFirst(std::move(connection.server), std::move(connection.client));

    const SocketPtr restarted = StreamSocket();
    prepare(*restarted);
    if (FailureOfBind(*restarted, port).code != 0) return false;
    restarted->Listen();
    const Connection again = ConnectedThrough(*restarted);
    ExpectExchange(*again.client, *again.server);
    return true;
}

// That another process takes the port in between does not happen three times in a row.
template <class Prepare>
bool CanRestartInThreeAttempts(Prepare prepare) {
    return CanRestart(prepare) || CanRestart(prepare) || CanRestart(prepare);
}

TEST_F(Bind, AServerThatClosedFirstRestartsOnItsPort) {
    EXPECT_TRUE(CanRestartInThreeAttempts([](VelNet::Socket&) {}));
}

TEST_F(Bind, AServerThatClosedFirstRestartsOnItsPortWithReuseToo) {
    EXPECT_TRUE(
        CanRestartInThreeAttempts([](VelNet::Socket& socket) { socket.SetReuseAddress(); }));
}

}  // namespace
}  // namespace Loopback

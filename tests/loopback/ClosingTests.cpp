// A socket that one thread closes while another waits in an operation on it.
#include <loopback/ExtendedTest.h>
#include <support/WaitingCall.h>

#include <functional>
#include <string>

namespace Loopback {
namespace {

constexpr int Interrupted = 10004;
constexpr const char16_t* Description = u"Interrupted function call";

using WaitingOperation = Support::WaitingCall<Failure>;

// Closes the socket under the operation that waits on it.
Failure FailureWhenClosed(VelNet::Socket& socket, const std::function<void()>& operation) {
    WaitingOperation waiting([&] { return FailureOf(operation); });
    socket.Close();
    return waiting.Finish();
}

using Closing = LoopbackTest;

TEST_F(Closing, EndsAnAcceptThatWaits) {
    const SocketPtr listener = Listening();
    VelNet::SocketAddress peer;
    EXPECT_EQ(FailureWhenClosed(*listener, [&] { listener->Accept(peer); }),
              SystemFailure(u"VelNet::SocketAPI::Accept() - FAIL. Cannot accept a connection",
                            Interrupted, Description));
}

TEST_F(Closing, EndsAReceiveThatWaits) {
    const Connection connection = Connected();
    char byte = 0;
    EXPECT_EQ(FailureWhenClosed(*connection.client, [&] { connection.client->Receive(&byte, 1); }),
              ReceiveFailed(Interrupted, Description));
    EXPECT_EQ(FailureOfReceive(*connection.server), ConnectionClosed());
}

TEST_F(Closing, EndsASendThatWaits) {
    const Connection connection = Connected();
    const std::string much(32U << 20U, 'x');
    EXPECT_EQ(FailureWhenClosed(
                  *connection.client,
                  [&] { connection.client->Send(much.data(), static_cast<int>(much.size())); }),
              SystemFailure(u"VelNet::SocketImpl::Send() - FAIL. The ::send failed", Interrupted,
                            Description));
}

TEST_F(Closing, LeavesAClosedSocketBehind) {
    const SocketPtr listener = Listening();
    VelNet::SocketAddress peer;
    FailureWhenClosed(*listener, [&] { listener->Accept(peer); });
    EXPECT_FALSE(listener->IsValid());
    EXPECT_EQ(listener->GetStatus(), VelNet::STATUS_NONE);
}

TEST_F(Closing, GivesAListenersPortBackAtOnce) {
    const SocketPtr listener = Listening();
    const unsigned short port = PortOf(*listener);
    VelNet::SocketAddress peer;
    WaitingOperation waiting([&] { return FailureOf([&] { listener->Accept(peer); }); });
    listener->Close();
    const SocketPtr next = ListeningOn(LocalHost(), port);
    const Connection connection = ConnectedThrough(*next);
    ExpectExchange(*connection.client, *connection.server);
}

class ExtendedClosing : public ExtendedTest {};

TEST_P(ExtendedClosing, EndsAnAcceptThatWaits) {
    const XtPtr listener = ListeningXt(GetParam());
    XtPtr socket;
    ReturnString host;
    ReturnString port;
    EXPECT_EQ(FailureWhenClosed(*listener, [&] { listener->Accept(socket, host, port); }),
              AcceptFailed(Host() + std::string(" : 0"), Interrupted, Description));
}

TEST_P(ExtendedClosing, EndsARecvFromThatWaits) {
    const XtPtr socket = Bound(Datagrams());
    char byte = 0;
    ReturnString host;
    ReturnString port;
    EXPECT_EQ(FailureWhenClosed(*socket, [&] { socket->RecvFrom(&byte, 1, host, port); }),
              RecvFromFailed(Interrupted, Description));
}

TEST_P(ExtendedClosing, EndsAReceiveThatWaits) {
    const XtPtr listener = ListeningXt(GetParam());
    const XtConnection connection = ConnectedThrough(*listener);
    char byte = 0;
    EXPECT_EQ(FailureWhenClosed(*connection.server, [&] { connection.server->Receive(&byte, 1); }),
              XtReceiveFailed(Interrupted, Description));
}

INSTANTIATE_TEST_SUITE_P(Versions, ExtendedClosing, testing::Values(Ipv4, Ipv6), NameOfVersion);

}  // namespace
}  // namespace Loopback

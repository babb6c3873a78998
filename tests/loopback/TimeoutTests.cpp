// Limits on how long a call blocks. A limit is never undercut; how much later a call ends is the
// system's affair.
#include <loopback/LoopbackTest.h>

#include <future>

namespace Loopback {
namespace {

using std::chrono::milliseconds;

class Timeout : public LoopbackTest {
protected:
    Timeout() { EnableOnly({Error}); }
};

TEST_F(Timeout, ReceiveEndsNotBeforeItsTime) {
    const Connection connection = Connected();
    connection.client->SetReceiveTimeout(250);
    for (int round = 0; round < 2; ++round) {
        const auto start = Clock::now();
        const Failure failure = FailureOfReceive(*connection.client);
        EXPECT_GE(Clock::now() - start, milliseconds(250));
        EXPECT_EQ(failure, ReceiveFailed(10060, u"Connection timed out"));
        EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    }
}

TEST_F(Timeout, AfterATimeoutTheConnectionGoesOn) {
    const Connection connection = Connected();
    connection.client->SetReceiveTimeout(1);
    EXPECT_EQ(FailureOfReceive(*connection.client), ReceiveFailed(10060, u"Connection timed out"));
    connection.client->SetReceiveTimeout(static_cast<unsigned int>(Patience.count()));
    ExpectExchange(*connection.client, *connection.server);
}

TEST_F(Timeout, SendEndsNotBeforeItsTime) {
    const Connection connection = Connected();
    connection.client->SetSendTimeout(250);
    const std::string bytes(1U << 20U, 'x');
    auto start = Clock::now();
    const Failure failure = FailureOf([&] {
        do {
            start = Clock::now();
        } while (connection.client->Send(bytes.data(), static_cast<int>(bytes.size())) > 0);
    });
    EXPECT_GE(Clock::now() - start, milliseconds(250));
    EXPECT_EQ(failure, SystemFailure(u"VelNet::SocketImpl::Send() - FAIL. The ::send failed", 10060,
                                     u"Connection timed out"));
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
}

TEST_F(Timeout, ADatagramSocketsReceiveEndsNotBeforeItsTime) {
    const SocketPtr socket = Bound(DatagramSocket());
    socket->SetReceiveTimeout(250);
    const auto start = Clock::now();
    EXPECT_EQ(FailureOfReceive(*socket), ReceiveFailed(10060, u"Connection timed out"));
    EXPECT_GE(Clock::now() - start, milliseconds(250));
}

// The timeout of another connection measures the time: twice the listener's own.
TEST_F(Timeout, AListenersReceiveTimeoutDoesNotEndAccept) {
    const Connection idle = Connected();
    idle.client->SetReceiveTimeout(300);
    const SocketPtr listener = Listening();
    listener->SetReceiveTimeout(150);
    const unsigned short port = PortOf(*listener);
    VelNet::SocketAddress remote;
    auto accepted = std::async(std::launch::async, [&] { return listener->Accept(remote); });

    EXPECT_EQ(FailureOfReceive(*idle.client).code, 10060);
    const SocketPtr client = StreamSocket();
    client->Connect(LocalHost(), port);
    const SocketPtr server = accepted.get();
    ASSERT_TRUE(server);
    ExpectExchange(*client, *server);
}

TEST_F(Timeout, OnAClosedSocketAFailureIsLoggedAndNotThrown) {
    const SocketPtr socket = StreamSocket();
    socket->Close();
    Sink().Take();
    socket->SetReceiveTimeout(5);
    socket->SetSendTimeout(5);
    socket->SetReuseAddress();
    const std::u16string tail = ErrorTail(10038, u"Socket operation on nonsocket");
    const std::u16string label = u"VelNet::SocketImpl::SetReceiveTimeout() - FAIL. ";
    EXPECT_EQ(
        Sink().Take(),
        (Records{{Error, label + u"Cannot set Receive Timeout" + tail},
                 {Error, label + u"Cannot set Send Timeout" + tail},
                 {Error, u"VelNet::SocketImpl::SetReuseAddress() - FAIL. Cannot set Reuse Address" +
                             tail}}));
}

}  // namespace
}  // namespace Loopback

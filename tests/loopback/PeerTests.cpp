// Peers that end the connection, in good order or not.
#include <loopback/LoopbackTest.h>
#include <loopback/RawConnection.h>
#include <loopback/ThisProcess.h>
#include <support/Wine.h>

namespace Loopback {
namespace {

class Peer : public LoopbackTest {
protected:
    Peer() { EnableOnly({Error}); }
};

Failure ReceiveReset() {
    return ReceiveFailed(10054, u"Connection reset by peer");
}

Failure SendFailed(int number, std::u16string_view description) {
    return SystemFailure(u"VelNet::SocketImpl::Send() - FAIL. The ::send failed", number,
                         description);
}

Failure SendReset() {
    return SendFailed(10054, u"Connection reset by peer");
}

Failure SendAborted() {
    return SendFailed(10053, u"Software caused connection abort");
}

Failure FailureOfSend(VelNet::Socket& socket) {
    return FailureOf([&socket] { socket.Send("x", 1); });
}

void ExpectFailure(const Failure& failure, const Failure& expected, const Failure& onWineToo) {
    if (Support::RunsOnWine() && failure == onWineToo) return;
    EXPECT_EQ(failure, expected);
}

TEST_F(Peer, AnOrderlyEndIsToldAfterTheDataAgainAndAgain) {
    const Connection connection = Connected();
    SendAll(*connection.server, "last words");
    connection.server->Close();
    EXPECT_EQ(ReceiveExactly(*connection.client, 10), "last words");
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(FailureOfReceive(*connection.client), ConnectionClosed());
        EXPECT_EQ(Sink().Take(), (Records{{Error, ConnectionClosed().text}}));
    }
    EXPECT_TRUE(connection.client->IsValid());
    EXPECT_EQ(connection.client->GetStatus(), VelNet::STATUS_IDLE);
}

TEST_F(Peer, AfterThePeerEndedItsSendingOursGoesOn) {
    const SocketPtr listener = Listening();
    RawConnection peer(PortOf(*listener));
    const SocketPtr server = Accepted(*listener);
    EXPECT_EQ(server->GetRemoteAddress().GetPort(), peer.LocalPort());
    peer.Send("question");
    peer.EndSending();
    EXPECT_EQ(ReceiveExactly(*server, 8), "question");
    EXPECT_EQ(FailureOfReceive(*server), ConnectionClosed());
    SendAll(*server, "answer");
    EXPECT_EQ(peer.Receive(6), "answer");
}

TEST_F(Peer, AResetIsToldAgainAndAgain) {
    const SocketPtr listener = Listening();
    RawConnection peer(PortOf(*listener));
    const SocketPtr server = Accepted(*listener);
    peer.Reset();
    const Failure first = FailureOfReceive(*server);
    ExpectFailure(first, ReceiveReset(), ConnectionClosed());
    EXPECT_EQ(Sink().Take(), (Records{{Error, first.text}}));
    for (int round = 0; round < 3; ++round) {
        ExpectFailure(FailureOfReceive(*server), ReceiveReset(), ConnectionClosed());
    }
    EXPECT_TRUE(server->IsValid());
    EXPECT_EQ(server->GetStatus(), VelNet::STATUS_IDLE);
}

TEST_F(Peer, AResetIsToldToASenderAgainAndAgainWithoutASignal) {
    const ThisProcess::BrokenPipeSignals signals;
    const SocketPtr listener = Listening();
    RawConnection peer(PortOf(*listener));
    const SocketPtr server = Accepted(*listener);
    peer.Reset();
    ExpectFailure(FailureOfReceive(*server), ReceiveReset(), ConnectionClosed());
    for (int round = 0; round < 3; ++round) {
        ExpectFailure(FailureOfSend(*server), SendReset(), SendAborted());
    }
    EXPECT_EQ(signals.Count(), 0);
}

// The peer's system answers the first bytes with a reset.
TEST_F(Peer, SendingToAPeerThatIsGoneFailsWithoutASignal) {
    const ThisProcess::BrokenPipeSignals signals;
    const Connection connection = Connected();
    connection.server->Close();
    Failure failure;
    EXPECT_TRUE(Eventually([&] {
        failure = FailureOfSend(*connection.client);
        return failure.code != 0;
    }));
    EXPECT_TRUE(failure == SendAborted() || failure == SendReset())
        << testing::PrintToString(failure);
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));

    const Failure again = FailureOfSend(*connection.client);
    EXPECT_TRUE(again == SendAborted() || again == SendReset()) << testing::PrintToString(again);
    EXPECT_EQ(signals.Count(), 0);
}

TEST_F(Peer, ClosingWithUnreadDataResetsThePeer) {
    const Connection connection = Connected();
    SendAll(*connection.client, "unread");
    EXPECT_TRUE(Eventually([&] { return connection.server->IsDataAvailable(); }));
    connection.server->Close();
    ExpectFailure(FailureOfReceive(*connection.client), ReceiveReset(), ConnectionClosed());
}

TEST_F(Peer, WithoutAPeerSendAndReceiveFailWithoutASignal) {
    const ThisProcess::BrokenPipeSignals signals;
    const SocketPtr socket = StreamSocket();
    EXPECT_EQ(FailureOfReceive(*socket), ReceiveFailed(10057, u"Socket is not connected"));
    ExpectFailure(FailureOfSend(*socket), SendFailed(10057, u"Socket is not connected"),
                  SendReset());
    EXPECT_EQ(signals.Count(), 0);
}

}  // namespace
}  // namespace Loopback

// Waiting for one socket.
#include <VelCompanion/Waiting.h>
#include <loopback/ExtendedTest.h>
#include <support/WaitingCall.h>
#include <support/Wine.h>

#include <stdexcept>

namespace Companion {
namespace {

using Loopback::Connection;
using Loopback::SocketPtr;
using VelCompanion::Deadline;
using VelCompanion::Milliseconds;
using VelCompanion::WaitToReceive;
using VelCompanion::WaitToSend;

constexpr Milliseconds Long = Loopback::Patience;

TEST(WaitingUntilADeadline, EndsAndNotBefore) {
    const Deadline over(Milliseconds(0));
    EXPECT_TRUE(over.IsOver());
    EXPECT_EQ(over.Left(), Milliseconds(0));
    const Deadline deadline(Long);
    EXPECT_FALSE(deadline.IsOver());
    EXPECT_TRUE(deadline.HasLimit());
    EXPECT_GT(deadline.Left(), Milliseconds(0));
    EXPECT_LE(deadline.Left(), Long);
    EXPECT_EQ(deadline.Limit(), Long);
}

TEST(WaitingUntilADeadline, CanBeWithoutLimit) {
    const Deadline never(VelCompanion::NoLimit);
    EXPECT_FALSE(never.HasLimit());
    EXPECT_FALSE(never.IsOver());
    EXPECT_GT(never.Left(), std::chrono::hours(24 * 365 * 50));
    EXPECT_FALSE(Deadline(VelCompanion::NoLimit - Milliseconds(1)).IsOver());
}

TEST(WaitingUntilADeadline, IsNotInThePast) {
    try {
        const Deadline deadline(Milliseconds(-1));
        FAIL() << "a negative limit was taken";
    } catch (const std::invalid_argument& failure) {
        EXPECT_STREQ(failure.what(), "VelCompanion: a time limit is negative");
    }
}

using WaitingForASocket = Loopback::LoopbackTest;

TEST_F(WaitingForASocket, ThatHasNothingTakesTheWholeTime) {
    const Connection connection = Loopback::Connected();
    const auto begin = Loopback::Clock::now();
    EXPECT_FALSE(WaitToReceive(*connection.client, Milliseconds(1100)));
    EXPECT_GE(Loopback::Clock::now() - begin, Milliseconds(1100));
    EXPECT_FALSE(WaitToReceive(*connection.client, Milliseconds(0)));
}

TEST_F(WaitingForASocket, EndsWithBytesAndWithTheEnd) {
    const Connection connection = Loopback::Connected();
    connection.client->Send("x", 1);
    EXPECT_TRUE(WaitToReceive(*connection.server, Long));
    EXPECT_TRUE(WaitToReceive(*connection.server, Milliseconds(0)));
    EXPECT_EQ(Loopback::ReceiveSome(*connection.server), "x");
    connection.client->Close();
    EXPECT_TRUE(WaitToReceive(*connection.server, Long));
}

TEST_F(WaitingForASocket, EndsWithAConnectionToAccept) {
    const SocketPtr listener = Loopback::Listening();
    EXPECT_FALSE(WaitToReceive(*listener, Milliseconds(0)));
    const SocketPtr client = Loopback::ConnectedTo(*listener);
    EXPECT_TRUE(WaitToReceive(*listener, Long));
}

TEST_F(WaitingForASocket, EndsWithRoomToSend) {
    const Connection connection = Loopback::Connected();
    EXPECT_TRUE(WaitToSend(*connection.client, Milliseconds(0)));
    EXPECT_TRUE(connection.client->SetNonBlocking());
    const std::string block(65536, 'x');
    // Some of what was taken may still be on its way and make room.
    EXPECT_TRUE(Loopback::Eventually([&] {
        while (connection.client->Send(block.data(), int(block.size())) > 0) {
        }
        return !WaitToSend(*connection.client, Milliseconds(50));
    }));
}

// Its status stays that of an unconnected socket, so that no collection reports it.
TEST_F(WaitingForASocket, WorksForOneThatHasConnectedWithoutBlocking) {
    const SocketPtr listener = Loopback::Listening();
    const SocketPtr client = Loopback::StreamSocket();
    EXPECT_TRUE(client->SetNonBlocking());
    const unsigned short port = Loopback::PortOf(*listener);
    EXPECT_THROW(client->Connect(Loopback::LocalHost(), port), VelNet::Exception);
    EXPECT_TRUE(WaitToSend(*client, Long));
    const SocketPtr server = Loopback::Accepted(*listener);
    EXPECT_FALSE(WaitToReceive(*client, Milliseconds(0)));
    Loopback::SendAll(*server, "x");
    EXPECT_TRUE(WaitToReceive(*client, Long));
    EXPECT_EQ(client->GetStatus(), VelNet::STATUS_NONE);
    EXPECT_EQ(Loopback::ReceiveSome(*client), "x");
}

TEST_F(WaitingForASocket, ThatIsClosedFails) {
    const SocketPtr socket = Loopback::StreamSocket();
    socket->Close();
    EXPECT_EQ(Loopback::FailureOf([&] { (void)WaitToReceive(*socket, Long); }).code,
              VelNet::SOCKET_ERR_NOTSOCK);
    EXPECT_THROW((void)WaitToSend(*socket, Milliseconds(-5)), std::invalid_argument);
}

TEST_F(WaitingForASocket, EndsWhenAnotherThreadClosesIt) {
    if (Support::RunsOnWine()) GTEST_SKIP() << "Wine lets the selection wait";
    const Connection connection = Loopback::Connected();
    Support::WaitingCall<int> waiting([&] {
        return Loopback::FailureOf([&] { (void)WaitToReceive(*connection.client, Long); }).code;
    });
    connection.client->Close();
    EXPECT_EQ(waiting.Finish(), VelNet::SOCKET_ERR_INTR);
}

class WaitingForExtendedSockets : public Loopback::ExtendedTest {};

TEST_P(WaitingForExtendedSockets, IsTheSame) {
    const Loopback::XtConnection connection = Connected();
    EXPECT_FALSE(WaitToReceive(*connection.client, Milliseconds(20)));
    EXPECT_TRUE(WaitToSend(*connection.client, Milliseconds(0)));
    connection.server->Close();
    EXPECT_TRUE(WaitToReceive(*connection.client, Long));

    const Loopback::XtPtr datagrams = Loopback::Bound(Datagrams());
    EXPECT_FALSE(WaitToReceive(*datagrams, Milliseconds(0)));
    Loopback::SendTo(*datagrams, "x", Host(), Loopback::PortOf(*datagrams));
    EXPECT_TRUE(WaitToReceive(*datagrams, Long));
}

INSTANTIATE_TEST_SUITE_P(Versions, WaitingForExtendedSockets,
                         testing::Values(Loopback::Ipv4, Loopback::Ipv6), Loopback::NameOfVersion);

}  // namespace
}  // namespace Companion

// Two sockets that are connected to each other.
#include <VelCompanion/Pairs.h>
#include <loopback/LoopbackTest.h>

namespace Companion {
namespace {

using Pairs = Loopback::LoopbackTest;

TEST_F(Pairs, CarryBytesBothWays) {
    const VelCompanion::SocketPair pair = VelCompanion::MakeSocketPair();
    Loopback::SetPatience(*pair.first);
    Loopback::SetPatience(*pair.second);
    Loopback::ExpectExchange(*pair.first, *pair.second);
    Loopback::ExpectExchange(*pair.second, *pair.first);
    EXPECT_EQ(pair.second->GetStatus(), VelNet::STATUS_IDLE);
}

TEST_F(Pairs, AreOnlyReachableFromThisMachine) {
    const VelCompanion::SocketPair pair = VelCompanion::MakeSocketPair();
    EXPECT_EQ(pair.second->GetLocalAddress().GetOctets(), Loopback::LocalHost());
    EXPECT_EQ(pair.second->GetRemoteAddress().GetPort(), Loopback::PortOf(*pair.first));
    // Nobody listens any more.
    const unsigned short port = pair.first->GetRemoteAddress().GetPort();
    const Loopback::SocketPtr stranger = Loopback::StreamSocket();
    EXPECT_EQ(Loopback::FailureOf([&] { stranger->Connect(Loopback::LocalHost(), port); }).code,
              VelNet::SOCKET_ERR_CONNREFUSED);
}

TEST(PairsWithoutLayer, AreNotMade) {
    EXPECT_EQ(Loopback::FailureOf([] { (void)VelCompanion::MakeSocketPair(); }).code,
              VelNet::SOCKET_ERR_NOTINITIALISED);
}

}  // namespace
}  // namespace Companion

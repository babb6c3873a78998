// The socket layer comes up and goes down.
#include <VelLog/LogControl.h>
#include <VelNet/SocketInitialization.h>
#include <loopback/LoopbackTest.h>
#include <loopback/ThisProcess.h>

#include <future>
#include <memory>
#include <vector>

namespace Loopback {
namespace {

using VelNet::SocketInitialization;

Failure FailureOfCreation() {
    return FailureOf(
        [] { VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP); });
}

void ExpectLayerIsUp() {
    const Connection connection = Connected();
    ExpectExchange(*connection.client, *connection.server);
}

void ExpectLayerIsDown() {
    EXPECT_EQ(FailureOfCreation(),
              SystemFailure(u"VelNet::CreateSocket() - FAIL. The ::socket failed", 10093,
                            u"Successful WSAStartup() not yet performed"));
}

TEST(StartUp, WithoutAnInitializationThereAreNoSockets) {
    ExpectLayerIsDown();
}

TEST(StartUp, TheLayerIsUpWhileOneInitializationLives) {
    {
        const SocketInitialization layer;
        ExpectLayerIsUp();
    }
    ExpectLayerIsDown();
}

TEST(StartUp, TheLayerComesUpAgainAndAgain) {
    for (int round = 0; round < 200; ++round) {
        {
            const SocketInitialization layer;
            ExpectLayerIsUp();
        }
        ExpectLayerIsDown();
    }
}

TEST(StartUp, NestedInitializationsOnlyCount) {
    auto outer = std::make_unique<SocketInitialization>();
    {
        const SocketInitialization inner;
        ExpectLayerIsUp();
    }
    ExpectLayerIsUp();
    auto last = std::make_unique<SocketInitialization>();
    outer.reset();
    ExpectLayerIsUp();
    last.reset();
    ExpectLayerIsDown();
}

TEST(StartUp, AConnectionOutlivesAnInnerInitialization) {
    const SocketInitialization outer;
    Connection connection;
    {
        const SocketInitialization inner;
        connection = Connected();
    }
    ExpectExchange(*connection.client, *connection.server);
}

TEST(StartUp, AssignmentChangesNothing) {
    {
        SocketInitialization one;
        const SocketInitialization other;
        EXPECT_EQ(&(one = other), &one);
        ExpectLayerIsUp();
    }
    ExpectLayerIsDown();
}

TEST(StartUp, SeveralThreadsBringTheLayerUpAndDownAtTheSameTime) {
    const auto useTheLayer = [] {
        for (int round = 0; round < 50; ++round) {
            const SocketInitialization layer;
            const SocketInitialization nested;
            ExpectLayerIsUp();
        }
    };
    std::vector<std::future<void>> threads;
    for (int count = 0; count < 4; ++count) {
        threads.push_back(std::async(std::launch::async, useTheLayer));
    }
    for (auto& thread : threads) {
        thread.get();
    }
    ExpectLayerIsDown();
}

TEST(StartUp, TheLayerLeavesNoDescriptorBehind) {
    const int before = ThisProcess::OpenDescriptors();
    for (int round = 0; round < 3; ++round) {
        const SocketInitialization layer;
        ExpectLayerIsUp();
    }
    EXPECT_EQ(ThisProcess::OpenDescriptors(), before);
}

TEST(StartUp, TheEndOfTheLayerClosesWhatIsStillOpen) {
    const int before = ThisProcess::OpenDescriptors();
    auto layer = std::make_unique<SocketInitialization>();
    const SocketPtr listener = Listening();
    const Connection connection = ConnectedThrough(*listener);
    EXPECT_EQ(ThisProcess::OpenDescriptors(), before + 3);
    layer.reset();
    EXPECT_EQ(ThisProcess::OpenDescriptors(), before);
}

TEST(StartUp, AWholeExchangeLeavesSignalsAsTheyWereAndStartsNoThread) {
    const std::string signals = ThisProcess::SignalDispositions();
    const int threads = ThisProcess::ThreadCount();
    {
        const SocketInitialization layer;
        EXPECT_LE(ThisProcess::ThreadCount(), threads);
        const Connection connection = Connected();
        ExpectExchange(*connection.client, *connection.server);
        VelNet::SocketAddress::GetOctetsFromMachineName("localhost");
        EXPECT_LE(ThisProcess::ThreadCount(), threads);
        EXPECT_EQ(ThisProcess::SignalDispositions(), signals);
    }
    EXPECT_LE(ThisProcess::ThreadCount(), threads);
    EXPECT_EQ(ThisProcess::SignalDispositions(), signals);
}

}  // namespace
}  // namespace Loopback

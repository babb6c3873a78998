// A stop signal for threads that wait.
#include <VelCompanion/Owners.h>
#include <VelCompanion/StopSignal.h>
#include <loopback/ExtendedTest.h>
#include <support/WaitingCall.h>

#include <memory>
#include <vector>

namespace Companion {
namespace {

using Loopback::SocketPtr;
using VelCompanion::ClosedByStop;
using VelCompanion::StopSignal;

using StopSignals = Loopback::LoopbackTest;

TEST_F(StopSignals, WakeASelection) {
    StopSignal signal;
    Support::WaitingCall<unsigned int> waiting([&] {
        const auto collection = VelCompanion::MakeCollection();
        signal.AddTo(*collection);
        const auto ready = VelCompanion::Select(*collection, 600);
        return ready ? ready->GetCount() : 0;
    });
    EXPECT_FALSE(signal.IsStopped());
    signal.Stop();
    EXPECT_EQ(waiting.Finish(), 1U);
    EXPECT_TRUE(signal.IsStopped());
}

TEST_F(StopSignals, StayReady) {
    StopSignal signal;
    const auto collection = VelCompanion::MakeCollection();
    signal.AddTo(*collection);
    EXPECT_FALSE(VelCompanion::Select(*collection, 0));
    signal.Stop();
    signal.Stop();
    for (int round = 0; round < 3; ++round) {
        const auto ready = VelCompanion::Select(*collection, 60);
        ASSERT_TRUE(ready);
        EXPECT_EQ(ready->GetCount(), 1U);
    }
}

TEST_F(StopSignals, StandAmongOtherSockets) {
    StopSignal signal;
    const Loopback::Connection connection = Loopback::Connected();
    const auto collection = VelCompanion::MakeCollection();
    signal.AddTo(*collection);
    collection->Add(connection.server.Get(), VelNet::EVENT_READ);
    Loopback::SendAll(*connection.client, "x");
    const auto ready = VelCompanion::Select(*collection, 60);
    ASSERT_TRUE(ready);
    ASSERT_EQ(ready->GetCount(), 1U);
    EXPECT_EQ(ready->GetSocket(0).Get(), connection.server.Get());
    EXPECT_FALSE(signal.IsStopped());
}

// Whatever the system's way to say it: the operation has ended by a failure.
template <class Operation>
bool Fails(Operation operation) {
    try {
        operation();
        return false;
    } catch (const VelNet::Exception&) {
        return true;
    }
}

TEST_F(StopSignals, CloseASocketUnderTheThreadThatWaitsInIt) {
    StopSignal signal;
    const SocketPtr listener = Loopback::Listening();
    Support::WaitingCall<bool> waiting([&] {
        const ClosedByStop closed(signal, *listener);
        VelNet::SocketAddress remote;
        return Fails([&] { listener->Accept(remote); }) && signal.IsStopped();
    });
    signal.Stop();
    EXPECT_TRUE(waiting.Finish());
    EXPECT_FALSE(listener->IsValid());
}

TEST_F(StopSignals, CloseAllThatAreRegistered) {
    StopSignal signal;
    std::vector<SocketPtr> sockets;
    std::vector<std::unique_ptr<ClosedByStop>> scopes;
    for (int count = 0; count < 3; ++count) {
        sockets.push_back(Loopback::StreamSocket());
        scopes.push_back(std::make_unique<ClosedByStop>(signal, *sockets.back()));
    }
    scopes[1].reset();
    signal.Stop();
    EXPECT_FALSE(sockets[0]->IsValid());
    EXPECT_TRUE(sockets[1]->IsValid());
    EXPECT_FALSE(sockets[2]->IsValid());
}

TEST_F(StopSignals, CloseAtOnceWhatComesTooLate) {
    StopSignal signal;
    signal.Stop();
    const SocketPtr socket = Loopback::StreamSocket();
    const ClosedByStop closed(signal, *socket);
    EXPECT_FALSE(socket->IsValid());
}

class StopSignalsForExtended : public Loopback::ExtendedTest {};

TEST_P(StopSignalsForExtended, CloseASocketUnderTheThreadThatWaitsInIt) {
    StopSignal signal;
    const Loopback::XtConnection connection = Connected();
    Support::WaitingCall<bool> waiting([&] {
        const ClosedByStop closed(signal, *connection.server);
        char byte = 0;
        return Fails([&] { connection.server->Receive(&byte, 1); }) && signal.IsStopped();
    });
    signal.Stop();
    EXPECT_TRUE(waiting.Finish());
}

// Closing what is closed throws for this family.
TEST_P(StopSignalsForExtended, DoNotMindThatTheSocketIsClosedAlready) {
    StopSignal signal;
    const Loopback::XtPtr socket = Stream();
    const ClosedByStop closed(signal, *socket);
    socket->Close();
    signal.Stop();
    const ClosedByStop again(signal, *socket);
    EXPECT_FALSE(socket->IsValid());
}

INSTANTIATE_TEST_SUITE_P(Versions, StopSignalsForExtended,
                         testing::Values(Loopback::Ipv4, Loopback::Ipv6), Loopback::NameOfVersion);

}  // namespace
}  // namespace Companion

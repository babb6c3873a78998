#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "Provocation.h"
#include "Scene.h"
#include "WineAnswers.h"

namespace Conformance {
namespace {

using StreamTransfer = Started;

TEST_F(StreamTransfer, MovesBytesBothWays) {
    const Pair pair = NewConnectedPair();
    EXPECT_TRUE(Succeeds(Send(pair.client, "question"), 8));
    EXPECT_EQ(Receive(pair.server), "question");
    EXPECT_TRUE(Succeeds(Send(pair.server, std::string("ans\0er", 6)), 6));
    EXPECT_EQ(Receive(pair.client), std::string("ans\0er", 6));
}

TEST_F(StreamTransfer, ReceivesNoMoreThanThereIsRoomFor) {
    const Pair pair = NewConnectedPair();
    ASSERT_TRUE(Succeeds(Send(pair.client, "abcdef"), 6));
    char buffer[4] = {'-', '-', '-', '-'};
    EXPECT_TRUE(Succeeds(Winsock::recv(pair.server.Get(), buffer, 3, 0), 3));
    EXPECT_EQ(std::string(buffer, 4), "abc-");
    EXPECT_EQ(Receive(pair.server), "def");
}

TEST_F(StreamTransfer, NeedsAConnection) {
    const OwnedSocket listener = NewListener();
    for (const OwnedSocket& socket : {NewStream(), NewBoundStream()}) {
        EXPECT_TRUE(FailsWith(10057, TryReceive(socket)));
        EXPECT_TRUE(FailsWith(10057, Send(socket, "x"), "sending without a connection"));
        EXPECT_TRUE(FailsWith(10057, Send(socket, ""), "sending without a connection"));
    }
    if (WineGivesNoAnswer("transfer on a listener")) return;
    EXPECT_TRUE(FailsWith(10057, TryReceive(listener)));
    EXPECT_TRUE(FailsWith(10057, Send(listener, "x")));
    EXPECT_TRUE(FailsWith(10057, Send(listener, "")));
}

TEST_F(StreamTransfer, RefusesNegativeLengthsAndNullBuffers) {
    const Pair pair = NewConnectedPair();
    char buffer[4] = {};
    ASSERT_TRUE(Succeeds(Send(pair.server, "data"), 4));
    EXPECT_TRUE(FailsWith(10014, Winsock::send(pair.client.Get(), buffer, -1, 0)));
    EXPECT_TRUE(FailsWith(10014, Winsock::send(pair.client.Get(), buffer, -2147483647 - 1, 0)));
    EXPECT_TRUE(FailsWith(10014, Winsock::send(pair.client.Get(), nullptr, 4, 0)));
    EXPECT_TRUE(FailsWith(10014, Winsock::recv(pair.client.Get(), buffer, -1, 0)));
    EXPECT_TRUE(FailsWith(10014, Winsock::recv(pair.client.Get(), nullptr, 4, 0)));
    EXPECT_EQ(Receive(pair.client), "data");
}

TEST_F(StreamTransfer, RefusesUnknownFlags) {
    if (WineGivesNoAnswer("transfer with unknown flags")) GTEST_SKIP() << "Wine gives no answer";
    const Pair pair = NewConnectedPair();
    char buffer[4] = {};
    EXPECT_TRUE(FailsWith(10045, Winsock::send(pair.client.Get(), buffer, 4, 0x4000)));
    EXPECT_TRUE(FailsWith(10045, Winsock::recv(pair.client.Get(), buffer, 4, 0x4000)));
}

TEST_F(StreamTransfer, OfNothingMovesNothing) {
    const Pair pair = NewConnectedPair();
    EXPECT_TRUE(Succeeds(Send(pair.client, ""), 0));
    ASSERT_TRUE(Succeeds(Send(pair.client, "x"), 1));
    AwaitReadable(pair.server.Get());
    EXPECT_TRUE(Succeeds(TryReceive(pair.server, 0), 0));
    EXPECT_EQ(Receive(pair.server), "x");
}

TEST_F(StreamTransfer, WouldBlockOnANonBlockingSocket) {
    const Pair pair = NewConnectedPair();
    SetNonBlocking(pair.client);
    EXPECT_TRUE(FailsWith(10035, TryReceive(pair.client)));
    EXPECT_TRUE(FailsWith(10035, TryReceive(pair.client, 0)));
    EXPECT_TRUE(FailsWith(10035, SendUntilFailure(pair.client)));
    // Not at the next byte for certain: what was sent may have moved on to the peer meanwhile.
    EXPECT_TRUE(FailsWith(10035, SendUntilFailure(pair.client)));
}

TEST_F(StreamTransfer, WouldBlockOnANonBlockingSocketWithTimeoutsToo) {
    const Pair pair = NewConnectedPair();
    SetNonBlocking(pair.client);
    ASSERT_TRUE(Succeeds(SetOption(pair.client, Winsock::OptionReceiveTimeout, 60'000)));
    ASSERT_TRUE(Succeeds(SetOption(pair.client, Winsock::OptionSendTimeout, 60'000)));
    EXPECT_TRUE(FailsWith(10035, TryReceive(pair.client)));
    EXPECT_TRUE(FailsWith(10035, SendUntilFailure(pair.client)));
}

TEST_F(StreamTransfer, AfterThePeersOrderlyEndGivesTheDataAndThenNothingForEver) {
    Pair pair = NewConnectedPair();
    ASSERT_TRUE(Succeeds(Send(pair.client, "last"), 4));
    pair.client.Close();
    EXPECT_EQ(Receive(pair.server), "last");
    EXPECT_TRUE(Succeeds(TryReceive(pair.server), 0));
    EXPECT_TRUE(Succeeds(TryReceive(pair.server), 0));
}

TEST_F(StreamTransfer, SendingToAClosedPeerIsAbortedWithoutASignal) {
    Pair pair = NewConnectedPair();
    pair.client.Close();
    EXPECT_EQ(Receive(pair.server), "");
    EXPECT_TRUE(Succeeds(Send(pair.server, "first"), 5));
    AwaitEnd(pair.server.Get());
    EXPECT_TRUE(FailsWith(10053, Send(pair.server, "second"), "sending to a closed peer"));
    EXPECT_TRUE(FailsWith(10053, Send(pair.server, "third"), "sending to a closed peer"));
    EXPECT_TRUE(FailsWith(10053, TryReceive(pair.server), "receiving after a refused send"));
}

TEST_F(StreamTransfer, ReceivingAfterASendThatAClosedPeerRefusedIsAborted) {
    Pair pair = NewConnectedPair();
    pair.client.Close();
    EXPECT_TRUE(Succeeds(TryReceive(pair.server), 0));
    EXPECT_TRUE(Succeeds(Send(pair.server, "late"), 4));
    AwaitEnd(pair.server.Get());
    EXPECT_TRUE(FailsWith(10053, TryReceive(pair.server), "receiving after a refused send"));
    EXPECT_TRUE(FailsWith(10053, Send(pair.server, "later"), "sending to a closed peer"));
}

class StreamTransferAfterReset : public Started {
protected:
    void SetUp() override {
        Started::SetUp();
        const OwnedSocket listener = NewListener();
        RawPeer peer = RawPeer::ConnectedTo(LocalPort(listener));
        socket_ = Accept(listener);
        peer.Reset();
        AwaitEnd(socket_.Get());
    }
    void TearDown() override {
        socket_.Close();
        Started::TearDown();
    }
    OwnedSocket socket_;
};

TEST_F(StreamTransferAfterReset, ReceivingFailsForEver) {
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket_), "receiving after a reset"));
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket_), "receiving after a reset"));
    EXPECT_TRUE(FailsWith(10054, Send(socket_, "x")));
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket_), "receiving after a reset"));
}

TEST_F(StreamTransferAfterReset, SendingFailsForEver) {
    EXPECT_TRUE(FailsWith(10054, Send(socket_, "x")));
    EXPECT_TRUE(FailsWith(10054, Send(socket_, "x")));
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket_), "receiving after a reset"));
}

TEST_F(StreamTransferAfterReset, ItIsStillAConnectedSocketToConnect) {
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket_), "receiving after a reset"));
    EXPECT_TRUE(FailsWith(10056, Connect(socket_, Loopback(9))));
}

TEST_F(StreamTransfer, ABlockedReceiveIsEndedByAReset) {
    const OwnedSocket listener = NewListener();
    RawPeer peer = RawPeer::ConnectedTo(LocalPort(listener));
    const OwnedSocket socket = Accept(listener);
    const SignalStorm storm([&] { peer.Reset(); });
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket), "receiving after a reset"));
}

TEST_F(StreamTransfer, ReceivingIsNotCutShortBySignals) {
    const OwnedSocket listener = NewListener();
    const RawPeer peer = RawPeer::ConnectedTo(LocalPort(listener));
    const OwnedSocket socket = Accept(listener);
    const SignalStorm storm([&] { peer.Send("late"); });
    EXPECT_EQ(Receive(socket), "late");
    EXPECT_GE(SignalStorm::SignalCount(), 20);
}

// Waiting on the atomic itself may sleep for ever where the system has no means for it.
void AwaitTrue(const std::atomic<bool>& flag) {
    while (!flag)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

TEST_F(StreamTransfer, ABlockingSendTakesTheWholeBufferInSpiteOfSignals) {
    const OwnedSocket listener = NewListener();
    const RawPeer peer = RawPeer::ConnectedTo(LocalPort(listener));
    OwnedSocket socket = Accept(listener);
    const std::string block(64U << 20U, 'x');
    std::thread reader;
    std::size_t received = 0;
    std::atomic<bool> start = false;
    reader = std::thread([&] {
        AwaitTrue(start);
        received = peer.ReceiveAll();
    });
    {
        const SignalStorm storm([&] { start = true; });
        EXPECT_TRUE(Succeeds(Send(socket, block), static_cast<int>(block.size())));
        EXPECT_GE(SignalStorm::SignalCount(), 20);
    }
    socket.Close();
    reader.join();
    EXPECT_EQ(received, block.size());
}

// The signals come before the first byte has found room.
TEST_F(StreamTransfer, ASendIntoAFullBufferIsNotCutShortBySignals) {
    const OwnedSocket listener = NewListener();
    const RawPeer peer = RawPeer::ConnectedTo(LocalPort(listener));
    OwnedSocket socket = Accept(listener);
    SetNonBlocking(socket);
    ASSERT_TRUE(FailsWith(10035, SendUntilFailure(socket)));
    SetNonBlocking(socket, false);
    std::atomic<bool> start = false;
    std::thread reader([&] {
        AwaitTrue(start);
        peer.ReceiveAll();
    });
    {
        const SignalStorm storm([&] { start = true; });
        EXPECT_TRUE(Succeeds(Send(socket, "more"), 4));
    }
    start = true;
    EXPECT_TRUE(Succeeds(Send(socket, "and more"), 8));
    socket.Close();
    reader.join();
}

TEST_F(StreamTransfer, OneThreadSendsWhileAnotherReceives) {
    const Pair pair = NewConnectedPair();
    const std::string block(16U << 20U, 'y');
    std::thread sender(
        [&] { EXPECT_TRUE(Succeeds(Send(pair.client, block), static_cast<int>(block.size()))); });
    std::thread echo([&] {
        std::size_t moved = 0;
        while (moved < block.size()) {
            const std::string part = Receive(pair.server, 65536);
            EXPECT_TRUE(Succeeds(Send(pair.server, part), static_cast<int>(part.size())));
            moved += part.size();
        }
    });
    std::size_t received = 0;
    while (received < block.size())
        received += Receive(pair.client, 65536).size();
    sender.join();
    echo.join();
    EXPECT_EQ(received, block.size());
}

}  // namespace
}  // namespace Conformance

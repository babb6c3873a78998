#include <algorithm>
#include <optional>
#include <vector>

#include "Provocation.h"
#include "Scene.h"
#include "SelectScene.h"
#include "WineAnswers.h"

namespace Conformance {
namespace {

using Winsock::HandleSet;

using Selecting = Started;

TEST_F(Selecting, NothingAtAllIsRefused) {
    HandleSet empty = SetOf({});
    EXPECT_TRUE(FailsWith(10022, Winsock::select(0, nullptr, nullptr, nullptr, &AtOnce)));
    EXPECT_TRUE(FailsWith(10022, Winsock::select(0, &empty, &empty, &empty, &AtOnce)));
    EXPECT_TRUE(FailsWith(10022, Winsock::select(0, &empty, nullptr, nullptr, &Minute)));
    EXPECT_TRUE(FailsWith(10022, Winsock::select(0, nullptr, nullptr, nullptr, nullptr)));
}

TEST_F(Selecting, WhatIsNoSocketIsRefusedAndLeavesTheSetsAlone) {
    const OwnedSocket ready = NewDatagram();
    OwnedSocket socket = NewBoundDatagram();
    const Winsock::Handle closed = socket.Get();
    socket.Close();
    for (const Winsock::Handle none :
         {closed, Winsock::InvalidSocket, 1ULL << 20U, 0x7FFFFFFCULL}) {
        for (int which = 0; which < 3; ++which) {
            HandleSet sets[3];
            std::fill(std::begin(sets), std::end(sets), SetOf({ready.Get()}));
            sets[which] = SetOf({ready.Get(), none});
            EXPECT_TRUE(FailsWith(10038, Winsock::select(0, &sets[0], &sets[1], &sets[2], &AtOnce)))
                << none << " in set " << which;
            for (int set = 0; set < 3; ++set) {
                EXPECT_EQ(sets[set].count, set == which ? 2U : 1U);
                EXPECT_EQ(sets[set].handles[0], ready.Get());
            }
            EXPECT_EQ(sets[which].handles[1], none);
        }
    }
}

TEST_F(Selecting, AStreamThatIsNeitherConnectedNorListeningIsNeverReady) {
    const OwnedSocket fresh = NewStream();
    const OwnedSocket bound = NewBoundStream();
    EXPECT_EQ(ReadyFor(fresh), "");
    EXPECT_EQ(ReadyFor(bound), "");
    HandleSet read = SetOf({fresh.Get(), bound.Get()});
    HandleSet write = read;
    HandleSet except = read;
    constexpr Winsock::TimeValue time = {0, 30'000};
    const Milliseconds waited = TimeOf(
        [&] { EXPECT_TRUE(Succeeds(Winsock::select(0, &read, &write, &except, &time), 0)); });
    EXPECT_GE(waited, Milliseconds(30));
}

TEST_F(Selecting, AStreamThatWasRefusedIsNeitherReadableNorWritable) {
    const OwnedSocket bound = NewBoundStream();
    const OwnedSocket refused = NewStream();
    ASSERT_TRUE(FailsWith(10061, Connect(refused, LocalAddress(bound))));
    HandleSet read = SetOf({refused.Get()});
    HandleSet write = read;
    constexpr Winsock::TimeValue time = {0, 30'000};
    const Milliseconds waited = TimeOf(
        [&] { EXPECT_TRUE(Succeeds(Winsock::select(0, &read, &write, nullptr, &time), 0)); });
    EXPECT_GE(waited, Milliseconds(30));
}

TEST_F(Selecting, AListenerIsReadableWhileAConnectionWaits) {
    const OwnedSocket listener = NewListener();
    EXPECT_EQ(ReadyFor(listener), "");
    const RawPeer client = RawPeer::ConnectedTo(LocalPort(listener));
    EXPECT_EQ(ReadyFor(listener, Minute), "r");
    EXPECT_EQ(ReadyFor(listener), "r");
    Accept(listener);
    EXPECT_EQ(ReadyFor(listener), "");
}

TEST_F(Selecting, AConnectedStreamIsWritableAndReadableWhileDataWait) {
    const Pair pair = NewConnectedPair();
    EXPECT_EQ(ReadyFor(pair.client), "w");
    EXPECT_EQ(ReadyFor(pair.server), "w");
    ASSERT_TRUE(Succeeds(Send(pair.client, "abc"), 3));
    ASSERT_TRUE(IsReadable(pair.server));
    EXPECT_EQ(ReadyFor(pair.server), "rw");
    EXPECT_EQ(ReadyFor(pair.client), "w");
    EXPECT_EQ(Receive(pair.server), "abc");
    EXPECT_EQ(ReadyFor(pair.server), "w");
}

TEST_F(Selecting, ThePeersOrderlyEndIsReadable) {
    Pair pair = NewConnectedPair();
    pair.client.Close();
    ASSERT_TRUE(IsReadable(pair.server));
    EXPECT_EQ(ReadyFor(pair.server), "rw");
    EXPECT_EQ(Receive(pair.server), "");
    EXPECT_EQ(ReadyFor(pair.server), "rw");
}

TEST_F(Selecting, AResetIsReadableAndWritableAndNoException) {
    const OwnedSocket listener = NewListener();
    RawPeer peer = RawPeer::ConnectedTo(LocalPort(listener));
    const OwnedSocket socket = Accept(listener);
    peer.Reset();
    AwaitEnd(socket.Get());
    EXPECT_EQ(ReadyFor(socket), "rw");
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket), "receiving after a reset"));
    EXPECT_EQ(ReadyFor(socket), "rw");
}

// What was sent may still be on its way into the peer's buffer and leave free space.
TEST_F(Selecting, AStreamWhosePeerDoesNotReadIsNotWritableInTheEnd) {
    const Pair pair = NewConnectedPair();
    SetNonBlocking(pair.client);
    std::string ready = "w";
    for (int tries = 0; tries < 100 && !ready.empty(); ++tries) {
        ASSERT_TRUE(FailsWith(10035, SendUntilFailure(pair.client)));
        ready = ReadyFor(pair.client);
    }
    EXPECT_EQ(ready, "");
}

TEST_F(Selecting, AFreshDatagramSocketIsWritable) {
    EXPECT_EQ(ReadyFor(NewDatagram()), "w");
    EXPECT_EQ(ReadyFor(NewDatagram(23)), "w");
    EXPECT_EQ(ReadyFor(NewBoundDatagram()), "w");
}

TEST_F(Selecting, ADatagramIsReadableTheEmptyOneToo) {
    const OwnedSocket receiver = NewBoundDatagram();
    const Winsock::AddressIpv4 to = LocalAddress(receiver);
    for (const int length : {1, 0}) {
        EXPECT_EQ(ReadyFor(receiver), "w");
        ASSERT_TRUE(
            Succeeds(Winsock::sendto(NewDatagram().Get(), "x", length, 0, &to, sizeof to), length));
        ASSERT_TRUE(IsReadable(receiver));
        EXPECT_EQ(ReadyFor(receiver), "rw");
        EXPECT_TRUE(Succeeds(TryReceive(receiver), length));
    }
}

TEST_F(Selecting, ADatagramThatWasTurnedAwayIsReadableUntilAReceiveHasFailed) {
    if (WineGivesNoAnswer("an unreachable datagram peer")) GTEST_SKIP() << "Wine gives no answer";
    const Winsock::AddressIpv4 nobody = LocalAddress(NewBoundDatagram());
    const OwnedSocket sender = NewDatagram();
    for (int count = 0; count < 3; ++count) {
        ASSERT_TRUE(Succeeds(Winsock::sendto(sender.Get(), "x", 1, 0, &nobody, sizeof nobody), 1));
        ASSERT_TRUE(IsReadable(sender)) << count;
    }
    for (int count = 0; count < 3; ++count) {
        EXPECT_EQ(ReadyFor(sender), "rw") << count;
        EXPECT_TRUE(FailsWith(10054, TryReceive(sender)));
    }
    EXPECT_EQ(ReadyFor(sender), "w");
    ASSERT_TRUE(Succeeds(Connect(sender, nobody)));
    ASSERT_TRUE(Succeeds(Send(sender, "x"), 1));
    ASSERT_TRUE(IsReadable(sender));
    EXPECT_TRUE(FailsWith(10054, TryReceive(sender)));
    EXPECT_EQ(ReadyFor(sender), "w");
}

TEST_F(Selecting, AHandleThatComesTwiceInASetCountsOnce) {
    const OwnedSocket first = NewDatagram();
    const OwnedSocket second = NewDatagram();
    HandleSet write = SetOf({first.Get(), second.Get(), first.Get(), second.Get(), first.Get()});
    EXPECT_TRUE(Succeeds(Winsock::select(0, nullptr, &write, nullptr, &AtOnce), 2));
    EXPECT_EQ(HandlesIn(write), Handles({&first, &second}));
}

TEST_F(Selecting, AHandleInTwoSetsCountsTwice) {
    const Pair pair = NewConnectedPair();
    ASSERT_TRUE(Succeeds(Send(pair.client, "x"), 1));
    ASSERT_TRUE(IsReadable(pair.server));
    HandleSet read = SetOf({pair.server.Get()});
    HandleSet write = read;
    EXPECT_TRUE(Succeeds(Winsock::select(0, &read, &write, nullptr, &AtOnce), 2));
    EXPECT_EQ(HandlesIn(read), Handles({&pair.server}));
    EXPECT_EQ(HandlesIn(write), Handles({&pair.server}));
}

TEST_F(Selecting, LeavesWhatIsReadyInTheGivenOrder) {
    const OwnedSocket first = NewDatagram();
    const OwnedSocket never = NewStream();
    const OwnedSocket second = NewDatagram();
    const OwnedSocket third = NewDatagram();
    HandleSet read = SetOf({third.Get(), first.Get()});
    HandleSet write = SetOf({third.Get(), never.Get(), first.Get(), second.Get()});
    EXPECT_TRUE(Succeeds(Winsock::select(0, &read, &write, nullptr, &Minute), 3));
    EXPECT_EQ(HandlesIn(read), Handles({}));
    EXPECT_EQ(HandlesIn(write), Handles({&third, &first, &second}));
}

TEST_F(Selecting, IgnoresTheFirstArgument) {
    const OwnedSocket socket = NewDatagram();
    for (const int ignored : {-1, 0, 1, 0x7FFFFFFF}) {
        HandleSet write = SetOf({socket.Get()});
        EXPECT_TRUE(Succeeds(Winsock::select(ignored, nullptr, &write, nullptr, &AtOnce), 1));
    }
}

TEST_F(Selecting, TakesAsManyHandlesAsASetHasRoomFor) {
    std::vector<OwnedSocket> sockets;
    HandleSet write = {};
    for (unsigned int count = 0; count < HandleSet::Room; ++count) {
        sockets.push_back(NewDatagram());
        write.handles[write.count++] = sockets.back().Get();
    }
    HandleSet read = write;
    HandleSet except = write;
    const std::vector<Winsock::Handle> all = HandlesIn(write);
    EXPECT_TRUE(Succeeds(Winsock::select(0, &read, &write, &except, &AtOnce), 64));
    EXPECT_EQ(HandlesIn(read), Handles({}));
    EXPECT_EQ(HandlesIn(write), all);
    EXPECT_EQ(HandlesIn(except), Handles({}));
}

TEST_F(Selecting, FindsTheLastHandleOfFullSets) {
    std::vector<OwnedSocket> sockets;
    HandleSet read = {};
    for (unsigned int count = 0; count < HandleSet::Room; ++count) {
        sockets.push_back(NewBoundDatagram());
        read.handles[read.count++] = sockets.back().Get();
    }
    const Winsock::AddressIpv4 to = LocalAddress(sockets.back());
    ASSERT_TRUE(Succeeds(Winsock::sendto(NewDatagram().Get(), "x", 1, 0, &to, sizeof to), 1));
    EXPECT_TRUE(Succeeds(Winsock::select(0, &read, nullptr, nullptr, &Minute), 1));
    EXPECT_EQ(HandlesIn(read), Handles({&sockets.back()}));
}

using SelectTime = Started;

// Generous, for machines under load; a time that starts again with each signal would never end.
constexpr Milliseconds Patient{10'000};

void ExpectWait(Winsock::TimeValue time, Milliseconds expected) {
    const OwnedSocket first = NewBoundDatagram();
    const OwnedSocket second = NewListener();
    HandleSet read = SetOf({first.Get(), second.Get()});
    HandleSet except = read;
    const Winsock::TimeValue given = time;
    const Milliseconds waited = TimeOf(
        [&] { EXPECT_TRUE(Succeeds(Winsock::select(0, &read, nullptr, &except, &time), 0)); });
    EXPECT_GE(waited, expected);
    EXPECT_LE(waited, expected + Patient);
    EXPECT_EQ(read.count, 0U);
    EXPECT_EQ(except.count, 0U);
    EXPECT_EQ(time.seconds, given.seconds);
    EXPECT_EQ(time.microseconds, given.microseconds);
}

TEST_F(SelectTime, EmptiesTheSetsWhenItIsOver) {
    ExpectWait({0, 50'000}, Milliseconds(50));
    ExpectWait({1, 0}, Milliseconds(1000));
}

TEST_F(SelectTime, OfNothingOnlyLooks) {
    ExpectWait({0, 0}, Milliseconds(0));
}

TEST_F(SelectTime, IsLeftAloneWhenASocketIsReady) {
    const OwnedSocket socket = NewDatagram();
    HandleSet write = SetOf({socket.Get()});
    Winsock::TimeValue time = {7, 8};
    EXPECT_TRUE(Succeeds(Winsock::select(0, nullptr, &write, nullptr, &time), 1));
    EXPECT_EQ(time.seconds, 7);
    EXPECT_EQ(time.microseconds, 8);
}

TEST_F(SelectTime, IsNeitherCutShortNorProlongedBySignals) {
    const SignalStorm storm;
    ExpectWait({0, 300'000}, Milliseconds(300));
    EXPECT_GE(SignalStorm::SignalCount(), 10);
}

TEST_F(SelectTime, OfNoneWaitsForEver) {
    const OwnedSocket listener = NewListener();
    const RawPeer peer = RawPeer::ConnectedTo(LocalPort(listener));
    const OwnedSocket socket = Accept(listener);
    const SignalStorm storm([&] { peer.Send("late"); });
    HandleSet read = SetOf({socket.Get(), listener.Get()});
    EXPECT_TRUE(Succeeds(Winsock::select(0, &read, nullptr, nullptr, nullptr), 1));
    EXPECT_EQ(HandlesIn(read), Handles({&socket}));
    EXPECT_EQ(Receive(socket), "late");
    EXPECT_GE(SignalStorm::SignalCount(), 20);
}

TEST_F(SelectTime, CannotBeNegative) {
    const OwnedSocket socket = NewDatagram();
    for (const Winsock::TimeValue& time : {Winsock::TimeValue{-1, 0}, Winsock::TimeValue{0, -1},
                                           Winsock::TimeValue{-1, 2'000'000}}) {
        HandleSet write = SetOf({socket.Get()});
        EXPECT_TRUE(FailsWith(10022, Winsock::select(0, nullptr, &write, nullptr, &time),
                              "a negative time of select"));
    }
}

// A connect that has begun and waits for room in the listener's queue.
class SelectingUnfinishedConnect : public Started {
protected:
    void SetUp() override {
        Started::SetUp();
        listener_.emplace();
        socket_ = NewStream();
        SetNonBlocking(socket_);
        ASSERT_TRUE(FailsWith(10035, Connect(socket_, Loopback(listener_->Port()))));
    }
    void TearDown() override {
        socket_.Close();
        listener_.reset();
        Started::TearDown();
    }

    std::optional<FullListener> listener_;
    OwnedSocket socket_;
};

TEST_F(SelectingUnfinishedConnect, FindsNothing) {
    EXPECT_EQ(ReadyFor(socket_), "");
    EXPECT_EQ(ReadyFor(socket_, {0, 30'000}), "");
}

TEST_F(SelectingUnfinishedConnect, FindsItWritableWhenItHasSucceeded) {
    listener_->Drain();
    EXPECT_EQ(ReadyFor(socket_, Minute), "w");
    EXPECT_TRUE(Succeeds(Send(socket_, "now"), 3));
}

TEST_F(SelectingUnfinishedConnect, FindsItInTheLastSetWhenItHasFailed) {
    listener_->Close();
    EXPECT_EQ(ReadyFor(socket_, Minute), "e");
    EXPECT_EQ(ReadyFor(socket_), "e");
}

TEST_F(SelectingUnfinishedConnect, FindsItInNoOtherSetWhenItHasFailed) {
    listener_->Close();
    HandleSet except = SetOf({socket_.Get()});
    ASSERT_TRUE(Succeeds(Winsock::select(0, nullptr, nullptr, &except, &Minute), 1));
    HandleSet read = SetOf({socket_.Get()});
    HandleSet write = read;
    constexpr Winsock::TimeValue time = {0, 30'000};
    const Milliseconds waited = TimeOf(
        [&] { EXPECT_TRUE(Succeeds(Winsock::select(0, &read, &write, nullptr, &time), 0)); });
    EXPECT_GE(waited, Milliseconds(30));
}

TEST_F(SelectingUnfinishedConnect, ThatHasFailedCanBeBegunAnew) {
    const OwnedSocket target = NewListener();
    listener_->Close();
    ASSERT_EQ(ReadyFor(socket_, Minute), "e");
    ASSERT_TRUE(
        FailsWith(10035, Connect(socket_, LocalAddress(target)), "connecting after a refusal"));
    if (WineGivesNoAnswer("the outcome of a connect that was begun anew")) return;
    EXPECT_EQ(ReadyFor(socket_, Minute), "w");
    EXPECT_TRUE(FailsWith(10056, Connect(socket_, LocalAddress(target))));
}

using SelectingConnect = Started;

TEST_F(SelectingConnect, ThatWasRefusedFindsItInTheLastSet) {
    const OwnedSocket socket = NewStream();
    SetNonBlocking(socket);
    const OwnedSocket bound = NewBoundStream();
    ASSERT_TRUE(FailsWith(10035, Connect(socket, LocalAddress(bound))));
    constexpr std::string_view Situation = "selecting a connect that was refused";
    const std::string ready = ReadyFor(socket, Minute, Situation);
    if (ready != "re" || !IsWinesAnswer(Situation, 2, 0)) {
        EXPECT_EQ(ready, "e");
    }
}

TEST_F(SelectingConnect, ThatSucceededFindsItWritable) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket socket = NewStream();
    SetNonBlocking(socket);
    ASSERT_TRUE(FailsWith(10035, Connect(socket, LocalAddress(listener))));
    EXPECT_EQ(ReadyFor(socket, Minute), "w");
    EXPECT_TRUE(FailsWith(10056, Connect(socket, LocalAddress(listener))));
    const OwnedSocket server = Accept(listener);
    ASSERT_TRUE(Succeeds(Send(server, "x"), 1));
    ASSERT_TRUE(IsReadable(socket));
    EXPECT_EQ(ReadyFor(socket), "rw");
}

}  // namespace
}  // namespace Conformance

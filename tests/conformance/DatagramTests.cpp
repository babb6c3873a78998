#include "Provocation.h"
#include "Scene.h"
#include "WineAnswers.h"

namespace Conformance {
namespace {

using Datagram = Started;

// A receiver and a sender that is connected to it.
struct Channel {
    OwnedSocket receiver = NewBoundDatagram();
    OwnedSocket sender = NewDatagram();

    Channel() { EXPECT_TRUE(Succeeds(Connect(sender, LocalAddress(receiver)))); }
};

TEST_F(Datagram, ReachesTheConnectedPeer) {
    const Channel channel;
    EXPECT_TRUE(Succeeds(Send(channel.sender, "hello"), 5));
    EXPECT_EQ(Receive(channel.receiver), "hello");
}

TEST_F(Datagram, CannotBeReceivedByAnUnboundSocket) {
    const OwnedSocket nonBlocking = NewDatagram();
    SetNonBlocking(nonBlocking);
    EXPECT_TRUE(FailsWith(10022, TryReceive(nonBlocking), "receiving on an unbound socket"));
    if (WineGivesNoAnswer("waiting for a datagram on an unbound socket")) return;
    EXPECT_TRUE(FailsWith(10022, TryReceive(NewDatagram())));
}

TEST_F(Datagram, CannotBeSentWithoutAPeer) {
    EXPECT_TRUE(FailsWith(10057, Send(NewDatagram(), "x"), "sending a datagram without a peer"));
    EXPECT_TRUE(
        FailsWith(10057, Send(NewBoundDatagram(), "x"), "sending a datagram without a peer"));
}

TEST_F(Datagram, WouldBlockOnANonBlockingSocket) {
    const OwnedSocket socket = NewBoundDatagram();
    SetNonBlocking(socket);
    EXPECT_TRUE(FailsWith(10035, TryReceive(socket)));
}

TEST_F(Datagram, ThatFitsExactlyIsWhole) {
    const Channel channel;
    ASSERT_TRUE(Succeeds(Send(channel.sender, "12345"), 5));
    EXPECT_EQ(Receive(channel.receiver, 5), "12345");
}

TEST_F(Datagram, ThatIsTooLongIsReportedFillsTheBufferAndLosesItsRest) {
    const Channel channel;
    ASSERT_TRUE(Succeeds(Send(channel.sender, "123456789"), 9));
    ASSERT_TRUE(Succeeds(Send(channel.sender, "next"), 4));
    char buffer[6] = "-----";
    EXPECT_TRUE(FailsWith(10040, Winsock::recv(channel.receiver.Get(), buffer, 4, 0)));
    EXPECT_STREQ(buffer, "1234-");
    EXPECT_EQ(Receive(channel.receiver), "next");
}

TEST_F(Datagram, ThatMeetsNoRoomAtAllIsTooLong) {
    const Channel channel;
    ASSERT_TRUE(Succeeds(Send(channel.sender, "x"), 1));
    EXPECT_TRUE(FailsWith(10040, TryReceive(channel.receiver, 0)));
}

TEST_F(Datagram, ThatIsEmptyArrives) {
    const Channel channel;
    EXPECT_TRUE(Succeeds(Send(channel.sender, ""), 0));
    AwaitReadable(channel.receiver.Get());
    EXPECT_TRUE(Succeeds(TryReceive(channel.receiver), 0));
}

TEST_F(Datagram, ThatExceedsTheProtocolIsRefused) {
    const Channel channel;
    EXPECT_TRUE(FailsWith(10040, Send(channel.sender, std::string(65508, 'x'))));
    EXPECT_TRUE(Succeeds(Send(channel.sender, "small"), 5));
    EXPECT_EQ(Receive(channel.receiver), "small");
}

TEST_F(Datagram, RefusesNegativeLengths) {
    const Channel channel;
    char buffer[1] = {};
    EXPECT_TRUE(FailsWith(10014, Winsock::send(channel.sender.Get(), buffer, -1, 0),
                          "sending a datagram of negative length"));
    EXPECT_TRUE(FailsWith(10014, Winsock::recv(channel.receiver.Get(), buffer, -1, 0)));
}

TEST_F(Datagram, OfAnotherSenderDoesNotReachAConnectedSocket) {
    const Channel channel;
    const OwnedSocket stranger = NewDatagram();
    ASSERT_TRUE(Succeeds(Connect(stranger, LocalAddress(channel.sender))));
    ASSERT_TRUE(Succeeds(Send(stranger, "hello"), 5));
    SetNonBlocking(channel.sender);
    const int result = TryReceive(channel.sender);
    EXPECT_TRUE(FailsWith(10035, result));
}

TEST_F(Datagram, ThePeerCanBeChangedAndTakenAway) {
    const Channel channel;
    const OwnedSocket other = NewBoundDatagram();
    EXPECT_TRUE(Succeeds(Connect(channel.sender, LocalAddress(other))));
    ASSERT_TRUE(Succeeds(Send(channel.sender, "to other"), 8));
    EXPECT_EQ(Receive(other), "to other");
    EXPECT_TRUE(Succeeds(Connect(channel.sender, Ipv4(0, 0, 0, 0, 0))));
    EXPECT_TRUE(FailsWith(10057, Send(channel.sender, "to nobody"),
                          "a datagram to a peer that was taken away"));
}

class DatagramToAnUnreachablePeer : public Started {
protected:
    void SetUp() override {
        Started::SetUp();
        if (WineGivesNoAnswer("an unreachable datagram peer"))
            GTEST_SKIP() << "Wine gives no answer";
        OwnedSocket former = NewBoundDatagram();
        const Winsock::AddressIpv4 address = LocalAddress(former);
        former.Close();
        sender_ = NewDatagram();
        SetNonBlocking(sender_);
        ASSERT_TRUE(Succeeds(Connect(sender_, address)));
    }
    void TearDown() override {
        sender_.Close();
        Started::TearDown();
    }
    OwnedSocket sender_;
};

TEST_F(DatagramToAnUnreachablePeer, LetsEverySendSucceed) {
    for (int count = 0; count < 5; ++count) {
        EXPECT_TRUE(Succeeds(Send(sender_, "anybody?"), 8)) << count;
        AwaitEnd(sender_.Get());
    }
}

TEST_F(DatagramToAnUnreachablePeer, FailsOneReceiveForEachDatagramThatWasTurnedAway) {
    EXPECT_TRUE(Succeeds(Send(sender_, "one"), 3));
    AwaitEnd(sender_.Get());
    EXPECT_TRUE(Succeeds(Send(sender_, "two"), 3));
    AwaitEnd(sender_.Get());
    EXPECT_TRUE(FailsWith(10054, TryReceive(sender_)));
    EXPECT_TRUE(FailsWith(10054, TryReceive(sender_)));
    EXPECT_TRUE(FailsWith(10035, TryReceive(sender_)));
}

TEST_F(DatagramToAnUnreachablePeer, EndsABlockedReceive) {
    SetNonBlocking(sender_, false);
    EXPECT_TRUE(Succeeds(Send(sender_, "one"), 3));
    EXPECT_TRUE(FailsWith(10054, TryReceive(sender_)));
}

TEST_F(DatagramToAnUnreachablePeer, LeavesTheSocketUsable) {
    EXPECT_TRUE(Succeeds(Send(sender_, "one"), 3));
    AwaitEnd(sender_.Get());
    EXPECT_TRUE(FailsWith(10054, TryReceive(sender_)));
    const OwnedSocket receiver = NewBoundDatagram();
    ASSERT_TRUE(Succeeds(Connect(sender_, LocalAddress(receiver))));
    EXPECT_TRUE(Succeeds(Send(sender_, "two"), 3));
    EXPECT_EQ(Receive(receiver), "two");
}

TEST_F(Datagram, AnUnreachableIpv6PeerFailsAReceive) {
    if (WineGivesNoAnswer("an unreachable datagram peer")) GTEST_SKIP() << "Wine gives no answer";
    const OwnedSocket sender = NewDatagram(23);
    OwnedSocket former = NewDatagram(23);
    ASSERT_TRUE(Succeeds(Bind(former, LoopbackIpv6(0))));
    Winsock::AddressIpv6 address = {};
    int length = sizeof address;
    ASSERT_TRUE(Succeeds(Winsock::getsockname(former.Get(), &address, &length)));
    former.Close();
    ASSERT_TRUE(Succeeds(Connect(sender, address)));
    EXPECT_TRUE(Succeeds(Send(sender, "one"), 3));
    AwaitEnd(sender.Get());
    EXPECT_TRUE(Succeeds(Send(sender, "two"), 3));
    EXPECT_TRUE(FailsWith(10054, TryReceive(sender)));
}

}  // namespace
}  // namespace Conformance

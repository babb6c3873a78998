// Datagrams from anybody, and what comes back from nobody.
#include "DatagramScene.h"
#include "Provocation.h"
#include "Scene.h"
#include "WineAnswers.h"

namespace Conformance {
namespace {

using ReceivingFrom = Started;

TEST_F(ReceivingFrom, AnUnboundSocketFails) {
    const OwnedSocket socket = NewDatagram();
    SetNonBlocking(socket);
    EXPECT_TRUE(FailsWith(10022, ReceiveFrom(socket).result, "receiving on an unbound socket"));
}

TEST_F(ReceivingFrom, WouldBlockOrTimesOut) {
    const OwnedSocket socket = NewBoundDatagram();
    SetNonBlocking(socket);
    EXPECT_TRUE(FailsWith(10035, ReceiveFrom(socket).result));
    SetNonBlocking(socket, false);
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReceiveTimeout, 20)));
    EXPECT_TRUE(FailsWith(10060, ReceiveFrom(socket).result));
}

TEST_F(ReceivingFrom, AFailureLeavesTheAddressAlone) {
    const OwnedSocket socket = NewBoundDatagram();
    SetNonBlocking(socket);
    const auto received = ReceiveFrom(socket);
    EXPECT_TRUE(FailsWith(10035, received.result));
    EXPECT_EQ(received.sender.family, 0);
    EXPECT_EQ(received.length, 128);
}

TEST_F(ReceivingFrom, TooLittleRoomFillsItTellsTheSenderAndLosesTheRest) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewBoundDatagram();
    ASSERT_TRUE(Succeeds(SendTo(sender, "123456789", LocalAddress(receiver)), 9));
    ASSERT_TRUE(Succeeds(SendTo(sender, "next", LocalAddress(receiver)), 4));
    const auto received = ReceiveFrom(receiver, 4);
    EXPECT_TRUE(FailsWith(10040, received.result));
    EXPECT_EQ(received.buffer, "1234");
    EXPECT_EQ(received.length, 16);
    EXPECT_EQ(PortOf(received.sender), LocalPort(sender));
    EXPECT_EQ(Receive(receiver), "next");
}

TEST_F(ReceivingFrom, NoRoomAtAllTellsTheSender) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewBoundDatagram();
    ASSERT_TRUE(Succeeds(SendTo(sender, "x", LocalAddress(receiver)), 1));
    const auto received = ReceiveFrom(receiver, 0);
    EXPECT_TRUE(FailsWith(10040, received.result));
    EXPECT_EQ(PortOf(received.sender), LocalPort(sender));
}

TEST_F(ReceivingFrom, RoomForExactlyTheDatagramIsEnough) {
    const OwnedSocket receiver = NewBoundDatagram();
    ASSERT_TRUE(Succeeds(SendTo(NewDatagram(), "12345", LocalAddress(receiver)), 5));
    const auto received = ReceiveFrom(receiver, 5);
    EXPECT_TRUE(Succeeds(received.result, 5));
    EXPECT_EQ(received.buffer, "12345");
}

TEST_F(ReceivingFrom, AnEmptyDatagramTellsTheSender) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewBoundDatagram();
    EXPECT_TRUE(Succeeds(SendTo(sender, "", LocalAddress(receiver)), 0));
    const auto received = ReceiveFrom(receiver);
    EXPECT_TRUE(Succeeds(received.result, 0));
    EXPECT_EQ(received.length, 16);
    EXPECT_EQ(PortOf(received.sender), LocalPort(sender));
}

TEST_F(ReceivingFrom, ThePeerOfAConnectedSocketIsToldToo) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewBoundDatagram();
    ASSERT_TRUE(Succeeds(Connect(receiver, LocalAddress(sender))));
    ASSERT_TRUE(Succeeds(SendTo(sender, "x", LocalAddress(receiver)), 1));
    EXPECT_EQ(PortOf(ReceiveFrom(receiver).sender), LocalPort(sender));
}

TEST_F(ReceivingFrom, NobodyNeedsTheSender) {
    const OwnedSocket receiver = NewBoundDatagram();
    char buffer[8] = {};
    int length = 4711;
    for (int* unused : {static_cast<int*>(nullptr), &length}) {
        ASSERT_TRUE(Succeeds(SendTo(NewDatagram(), "abc", LocalAddress(receiver)), 3));
        EXPECT_TRUE(Succeeds(Winsock::recvfrom(receiver.Get(), buffer, 8, 0, nullptr, unused), 3));
    }
    EXPECT_EQ(length, 4711);
}

TEST_F(ReceivingFrom, TooLittleRoomForTheSenderKeepsTheDatagram) {
    const OwnedSocket receiver = NewBoundDatagram();
    ASSERT_TRUE(Succeeds(SendTo(NewDatagram(), "kept", LocalAddress(receiver)), 4));
    if (WineGivesNoAnswer("room for a part of a sender")) GTEST_SKIP() << "Wine gives no answer";
    Winsock::AddressIpv4 sender = {};
    char buffer[8] = {};
    for (int length : {15, 0, -1}) {
        EXPECT_TRUE(
            FailsWith(10014, Winsock::recvfrom(receiver.Get(), buffer, 8, 0, &sender, &length)));
    }
    EXPECT_TRUE(
        FailsWith(10014, Winsock::recvfrom(receiver.Get(), buffer, 8, 0, &sender, nullptr)));
    EXPECT_EQ(sender.family, 0);
    EXPECT_EQ(Receive(receiver), "kept");
}

TEST_F(ReceivingFrom, TooLittleRoomForAnIpv6SenderKeepsTheDatagram) {
    const OwnedSocket receiver = NewBoundIpv6Datagram();
    ASSERT_TRUE(Succeeds(SendTo(NewDatagram(23), "kept", LocalIpv6Address(receiver)), 4));
    if (WineGivesNoAnswer("room for a part of a sender")) GTEST_SKIP() << "Wine gives no answer";
    Winsock::AddressIpv6 sender = {};
    char buffer[8] = {};
    for (int length : {27, 16}) {
        EXPECT_TRUE(
            FailsWith(10014, Winsock::recvfrom(receiver.Get(), buffer, 8, 0, &sender, &length)));
    }
    EXPECT_EQ(Receive(receiver), "kept");
}

TEST_F(ReceivingFrom, RefusesNegativeLengthsAndNullBuffersAndKeepsTheDatagram) {
    const OwnedSocket receiver = NewBoundDatagram();
    ASSERT_TRUE(Succeeds(SendTo(NewDatagram(), "kept", LocalAddress(receiver)), 4));
    char buffer[8] = {};
    EXPECT_TRUE(
        FailsWith(10014, Winsock::recvfrom(receiver.Get(), buffer, -1, 0, nullptr, nullptr)));
    EXPECT_TRUE(
        FailsWith(10014, Winsock::recvfrom(receiver.Get(), nullptr, 8, 0, nullptr, nullptr)));
    EXPECT_TRUE(
        FailsWith(10014, Winsock::recvfrom(receiver.Get(), nullptr, 1, 0, nullptr, nullptr)));
    EXPECT_TRUE(FailsWith(10014, Winsock::recv(receiver.Get(), nullptr, 8, 0)));
    EXPECT_EQ(Receive(receiver), "kept");
}

TEST_F(ReceivingFrom, AConnectedStreamLeavesTheAddressAlone) {
    const Pair pair = NewConnectedPair();
    ASSERT_TRUE(Succeeds(Send(pair.client, "abc"), 3));
    const auto received = ReceiveFrom(pair.server);
    EXPECT_TRUE(Succeeds(received.result, 3));
    EXPECT_EQ(received.buffer.substr(0, 4), "abc-");
    EXPECT_EQ(received.sender.family, 0);
    EXPECT_EQ(received.length, 128);
}

TEST_F(ReceivingFrom, AStreamNeedsAConnection) {
    EXPECT_TRUE(FailsWith(10057, ReceiveFrom(NewStream()).result));
    EXPECT_TRUE(FailsWith(10057, ReceiveFrom(NewBoundStream()).result));
    if (WineGivesNoAnswer("transfer on a listener")) return;
    EXPECT_TRUE(FailsWith(10057, ReceiveFrom(NewListener()).result));
}

TEST_F(ReceivingFrom, IsNotCutShortBySignals) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewBoundDatagram();
    const Winsock::AddressIpv4 to = LocalAddress(receiver);
    const SignalStorm storm([&] { Winsock::sendto(sender.Get(), "late", 4, 0, &to, sizeof to); });
    const auto received = ReceiveFrom(receiver);
    EXPECT_EQ(received.result, 4);
    EXPECT_EQ(PortOf(received.sender), LocalPort(sender));
    EXPECT_GE(SignalStorm::SignalCount(), 20);
}

// Where nobody listens, for as long as nobody is given the port.
template <typename Address>
Address Nobody();
template <>
Winsock::AddressIpv4 Nobody() {
    return LocalAddress(NewBoundDatagram());
}
template <>
Winsock::AddressIpv6 Nobody() {
    return LocalIpv6Address(NewBoundIpv6Datagram());
}

class ReceivingFromAfterSendingToNobody : public Started {
protected:
    void SetUp() override {
        Started::SetUp();
        if (WineGivesNoAnswer("an unreachable datagram peer"))
            GTEST_SKIP() << "Wine gives no answer";
    }

    template <typename Address>
    static void ExpectOneFailureForEach(const OwnedSocket& sender) {
        SetNonBlocking(sender);
        for (const Address& address : {Nobody<Address>(), Nobody<Address>(), Nobody<Address>()}) {
            EXPECT_TRUE(Succeeds(SendTo(sender, "anybody?", address), 8));
            AwaitEnd(sender.Get());
        }
        for (int count = 0; count < 3; ++count) {
            const auto received = ReceiveFrom<Address>(sender);
            EXPECT_TRUE(FailsWith(10054, received.result)) << count;
            EXPECT_EQ(received.sender.family, 0);
            EXPECT_EQ(received.length, 128);
        }
        EXPECT_TRUE(FailsWith(10035, TryReceive(sender)));
    }
};

TEST_F(ReceivingFromAfterSendingToNobody, FailsOneReceiveForEachDatagram) {
    ExpectOneFailureForEach<Winsock::AddressIpv4>(NewDatagram());
}

TEST_F(ReceivingFromAfterSendingToNobody, OverIpv6FailsOneReceiveForEachDatagram) {
    ExpectOneFailureForEach<Winsock::AddressIpv6>(NewDatagram(23));
}

TEST_F(ReceivingFromAfterSendingToNobody, DoesNotKeepDatagramsFromOthers) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewBoundDatagram();
    const auto nobody = Nobody<Winsock::AddressIpv4>();
    for (int count = 0; count < 40; ++count) {
        EXPECT_TRUE(Succeeds(SendTo(sender, "anybody?", nobody), 8));
        EXPECT_TRUE(Succeeds(SendTo(sender, "somebody", LocalAddress(receiver)), 8));
        EXPECT_EQ(Receive(receiver), "somebody");
    }
    ASSERT_TRUE(Succeeds(SendTo(receiver, "back", LocalAddress(sender)), 4));
    EXPECT_EQ(RepeatWhile(10054, [&] { return TryReceive(sender); }), 4);
}

TEST_F(ReceivingFromAfterSendingToNobody, EndsABlockedReceive) {
    const OwnedSocket sender = NewDatagram();
    EXPECT_TRUE(Succeeds(SendTo(sender, "one", Nobody<Winsock::AddressIpv4>()), 3));
    EXPECT_TRUE(FailsWith(10054, ReceiveFrom(sender).result));
}

}  // namespace
}  // namespace Conformance

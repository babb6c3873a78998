// Datagrams to anybody.
#include <cstring>

#include "DatagramScene.h"
#include "Scene.h"
#include "WineAnswers.h"

namespace Conformance {
namespace {

using SendingTo = Started;

TEST_F(SendingTo, AnAddressReachesItAndTellsTheSender) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewBoundDatagram();
    EXPECT_TRUE(Succeeds(SendTo(sender, "hello", LocalAddress(receiver)), 5));
    const auto received = ReceiveFrom(receiver);
    EXPECT_TRUE(Succeeds(received.result, 5));
    EXPECT_EQ(received.buffer.substr(0, 6), "hello-");
    EXPECT_EQ(received.length, 16);
    const Winsock::AddressIpv4 expected = Loopback(LocalPort(sender));
    EXPECT_EQ(std::memcmp(&received.sender, &expected, sizeof expected), 0);
}

TEST_F(SendingTo, AnIpv6AddressReachesItAndTellsTheSender) {
    const OwnedSocket receiver = NewBoundIpv6Datagram();
    const OwnedSocket sender = NewBoundIpv6Datagram();
    EXPECT_TRUE(Succeeds(SendTo(sender, "hello", LocalIpv6Address(receiver)), 5));
    const auto received = ReceiveFrom<Winsock::AddressIpv6>(receiver);
    EXPECT_TRUE(Succeeds(received.result, 5));
    EXPECT_EQ(received.length, 28);
    const Winsock::AddressIpv6 expected = LocalIpv6Address(sender);
    EXPECT_EQ(expected.family, 23);
    EXPECT_EQ(std::memcmp(&received.sender, &expected, sizeof expected), 0);
}

TEST_F(SendingTo, AnAddressTakesALongerLength) {
    const OwnedSocket receiver = NewBoundDatagram();
    const Winsock::AddressIpv4 address = LocalAddress(receiver);
    Winsock::AddressStorage storage = {};
    std::memcpy(&storage, &address, sizeof address);
    EXPECT_TRUE(Succeeds(SendTo(NewDatagram(), "x", storage), 1));
    EXPECT_EQ(Receive(receiver), "x");
}

TEST_F(SendingTo, AnAddressBindsTheSocket) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewDatagram();
    SetNonBlocking(sender);
    Winsock::AddressIpv4 name = {};
    int length = sizeof name;
    EXPECT_TRUE(FailsWith(10022, Winsock::getsockname(sender.Get(), &name, &length)));
    EXPECT_TRUE(Succeeds(SendTo(sender, "x", LocalAddress(receiver)), 1));
    EXPECT_TRUE(FailsWith(10035, TryReceive(sender)));
    const Winsock::AddressIpv4 local = LocalAddress(sender);
    EXPECT_NE(PortOf(local), 0U);
    EXPECT_EQ(local.address[0], 0);
    EXPECT_EQ(PortOf(ReceiveFrom(receiver).sender), PortOf(local));
    EXPECT_TRUE(FailsWith(10022, Bind(sender, Loopback(0))));
}

TEST_F(SendingTo, AnAddressKeepsThePortOfABoundSocket) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewBoundDatagram();
    const unsigned int port = LocalPort(sender);
    for (int count = 0; count < 2; ++count) {
        ASSERT_TRUE(Succeeds(SendTo(sender, "x", LocalAddress(receiver)), 1));
        EXPECT_EQ(PortOf(ReceiveFrom(receiver).sender), port);
    }
}

TEST_F(SendingTo, NullGoesToThePeer) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewDatagram();
    EXPECT_TRUE(FailsWith(10057, Winsock::sendto(sender.Get(), "x", 1, 0, nullptr, 0),
                          "sending a datagram without a peer"));
    ASSERT_TRUE(Succeeds(Connect(sender, LocalAddress(receiver))));
    EXPECT_TRUE(Succeeds(Winsock::sendto(sender.Get(), "abc", 3, 0, nullptr, 0), 3));
    EXPECT_EQ(Receive(receiver), "abc");
}

TEST_F(SendingTo, AnAddressGoesPastThePeer) {
    const OwnedSocket peer = NewBoundDatagram();
    const OwnedSocket other = NewBoundDatagram();
    const OwnedSocket sender = NewDatagram();
    ASSERT_TRUE(Succeeds(Connect(sender, LocalAddress(peer))));
    EXPECT_TRUE(Succeeds(SendTo(sender, "to other", LocalAddress(other)), 8));
    EXPECT_EQ(Receive(other), "to other");
    EXPECT_TRUE(Succeeds(Send(sender, "to peer"), 7));
    EXPECT_EQ(Receive(peer), "to peer");
}

TEST_F(SendingTo, AWrongAddressFails) {
    const Winsock::AddressIpv4 ipv4 = Loopback(9);
    const Winsock::AddressIpv6 ipv6 = LoopbackIpv6(9);
    Winsock::AddressIpv4 unknown = ipv4;
    unknown.family = 0xDEAD;
    const OwnedSocket socket = NewDatagram();
    const OwnedSocket socketIpv6 = NewDatagram(23);
    for (const int length : {15, 1, 0})
        EXPECT_TRUE(FailsWith(10014, SendTo(socket, "x", ipv4, length))) << length;
    EXPECT_TRUE(FailsWith(10014, SendTo(socket, "x", ipv4, -1),
                          "a datagram to an address of negative length"));
    EXPECT_TRUE(FailsWith(10014, SendTo(socketIpv6, "x", ipv6, 27)));
    EXPECT_TRUE(FailsWith(10014, SendTo(socketIpv6, "x", ipv4),
                          "a datagram to an IPv4 address from an IPv6 socket"));
    EXPECT_TRUE(
        FailsWith(10047, SendTo(socket, "x", ipv6), "a datagram to an address of another family"));
    EXPECT_TRUE(FailsWith(10047, SendTo(socket, "x", unknown),
                          "a datagram to an address of another family"));
}

TEST_F(SendingTo, NoAddressAtAllFails) {
    Winsock::AddressIpv6 any = LoopbackIpv6(9);
    any.address[15] = 0;
    EXPECT_TRUE(FailsWith(10049, SendTo(NewDatagram(), "x", Ipv4(0, 0, 0, 0, 9)),
                          "a datagram to no address"));
    EXPECT_TRUE(FailsWith(10049, SendTo(NewDatagram(), "x", Ipv4(0, 0, 0, 0, 0)),
                          "a datagram to no address"));
    EXPECT_TRUE(FailsWith(10049, SendTo(NewDatagram(23), "x", any), "a datagram to no address"));
}

TEST_F(SendingTo, AnIpv4AddressInTheFormOfIpv6Fails) {
    Winsock::AddressIpv6 mapped = LoopbackIpv6(LocalPort(NewBoundDatagram()));
    const unsigned char address[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 127, 0, 0, 1};
    std::memcpy(mapped.address, address, sizeof address);
    EXPECT_TRUE(FailsWith(10051, SendTo(NewDatagram(23), "x", mapped)));
}

TEST_F(SendingTo, Port0IsCountedAndBindsTheSocket) {
    const OwnedSocket socket = NewDatagram();
    SetNonBlocking(socket);
    EXPECT_TRUE(Succeeds(SendTo(socket, "abc", Loopback(0)), 3, "a datagram to port 0"));
    EXPECT_TRUE(FailsWith(10035, TryReceive(socket)));
    EXPECT_NE(LocalPort(socket), 0U);
    EXPECT_TRUE(Succeeds(SendTo(NewDatagram(23), "", LoopbackIpv6(0)), 0, "a datagram to port 0"));
}

TEST_F(SendingTo, EverybodyNeedsTheOption) {
    const OwnedSocket socket = NewDatagram();
    const Winsock::AddressIpv4 everybody = Ipv4(255, 255, 255, 255, 9);
    EXPECT_TRUE(FailsWith(10013, SendTo(socket, "x", everybody)));
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionBroadcast, 1)));
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionBroadcast, 0)));
    EXPECT_TRUE(FailsWith(10013, SendTo(socket, "x", everybody)));
}

TEST_F(SendingTo, RefusesNegativeLengthsNullBuffersAndUnknownFlags) {
    const OwnedSocket socket = NewDatagram();
    const Winsock::AddressIpv4 to = Loopback(9);
    EXPECT_TRUE(FailsWith(10014, Winsock::sendto(socket.Get(), "x", -1, 0, &to, sizeof to),
                          "sending a datagram of negative length"));
    EXPECT_TRUE(FailsWith(10014, Winsock::sendto(socket.Get(), nullptr, 4, 0, &to, sizeof to)));
    if (WineGivesNoAnswer("transfer with unknown flags")) return;
    EXPECT_TRUE(FailsWith(10045, Winsock::sendto(socket.Get(), "x", 1, 0x4000, &to, sizeof to)));
}

TEST_F(SendingTo, NothingFromNullIsAnEmptyDatagram) {
    const OwnedSocket receiver = NewBoundDatagram();
    const Winsock::AddressIpv4 to = LocalAddress(receiver);
    EXPECT_TRUE(Succeeds(Winsock::sendto(NewDatagram().Get(), nullptr, 0, 0, &to, sizeof to)));
    EXPECT_TRUE(Succeeds(TryReceive(receiver)));
}

TEST_F(SendingTo, MoreThanThePacketHasRoomForIsTooLong) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewDatagram();
    EXPECT_TRUE(FailsWith(10040, SendTo(sender, std::string(65508, 'x'), LocalAddress(receiver))));
    const std::string longest(65507, 'y');
    EXPECT_TRUE(Succeeds(SendTo(sender, longest, LocalAddress(receiver)), 65507));
    EXPECT_EQ(Receive(receiver, 70000), longest);
}

TEST_F(SendingTo, MoreThanAnIpv6PacketHasRoomForIsTooLong) {
    const OwnedSocket receiver = NewBoundIpv6Datagram();
    const OwnedSocket sender = NewDatagram(23);
    const Winsock::AddressIpv6 to = LocalIpv6Address(receiver);
    EXPECT_TRUE(FailsWith(10040, SendTo(sender, std::string(65528, 'x'), to)));
    const std::string longest(65527, 'y');
    EXPECT_TRUE(Succeeds(SendTo(sender, longest, to), 65527));
    EXPECT_EQ(Receive(receiver, 70000), longest);
}

TEST_F(SendingTo, OnAConnectedStreamIgnoresTheAddress) {
    const Pair pair = NewConnectedPair();
    const Winsock::AddressIpv6 anywhere = LoopbackIpv6(9);
    EXPECT_TRUE(Succeeds(SendTo(pair.client, "abc", anywhere), 3));
    EXPECT_EQ(Receive(pair.server), "abc");
    EXPECT_TRUE(Succeeds(Winsock::sendto(pair.client.Get(), "def", 3, 0, nullptr, 0), 3));
    EXPECT_EQ(Receive(pair.server), "def");
}

TEST_F(SendingTo, OnAStreamNeedsAConnection) {
    const Winsock::AddressIpv4 to = Loopback(9);
    EXPECT_TRUE(FailsWith(10057, SendTo(NewStream(), "x", to), "sending without a connection"));
    EXPECT_TRUE(FailsWith(10057, SendTo(NewBoundStream(), "", to), "sending without a connection"));
    if (WineGivesNoAnswer("transfer on a listener")) return;
    EXPECT_TRUE(FailsWith(10057, SendTo(NewListener(), "x", to)));
}

}  // namespace
}  // namespace Conformance

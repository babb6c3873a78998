// Datagram sockets that get a peer, and another one.
#include "DatagramScene.h"
#include "Provocation.h"
#include "Scene.h"
#include "WineAnswers.h"

namespace Conformance {
namespace {

using DatagramPeer = Started;

// What the socket receives without waiting.
int Receipt(const OwnedSocket& socket) {
    SetNonBlocking(socket);
    return TryReceive(socket);
}

TEST_F(DatagramPeer, IsHeardAlone) {
    const OwnedSocket socket = NewBoundDatagram();
    const OwnedSocket peer = NewBoundDatagram();
    const OwnedSocket other = NewBoundDatagram();
    ASSERT_TRUE(Succeeds(SendTo(other, "early", LocalAddress(socket)), 5));
    AwaitReadable(socket.Get());
    ASSERT_TRUE(Succeeds(Connect(socket, LocalAddress(peer))));
    ASSERT_TRUE(Succeeds(SendTo(other, "late", LocalAddress(socket)), 4));
    EXPECT_TRUE(FailsWith(10035, Receipt(socket), "a datagram from before connecting"));
}

TEST_F(DatagramPeer, IsNotHeardAnyMoreWhenThereIsAnother) {
    const OwnedSocket socket = NewBoundDatagram();
    const OwnedSocket former = NewBoundDatagram();
    const OwnedSocket peer = NewBoundDatagram();
    ASSERT_TRUE(Succeeds(Connect(socket, LocalAddress(former))));
    ASSERT_TRUE(Succeeds(SendTo(former, "early", LocalAddress(socket)), 5));
    AwaitReadable(socket.Get());
    ASSERT_TRUE(Succeeds(Connect(socket, LocalAddress(peer))));
    EXPECT_TRUE(FailsWith(10035, Receipt(socket), "a datagram from before connecting"));
    ASSERT_TRUE(Succeeds(SendTo(peer, "now", LocalAddress(socket)), 3));
    EXPECT_EQ(RepeatWhile(10035, [&] { return TryReceive(socket); }), 3);
}

TEST_F(DatagramPeer, ChangesWhileThePortStays) {
    const OwnedSocket bound = NewBoundDatagram();
    const OwnedSocket unbound = NewDatagram();
    const OwnedSocket first = NewBoundDatagram();
    const OwnedSocket second = NewBoundDatagram();
    for (const OwnedSocket* socket : {&bound, &unbound}) {
        ASSERT_TRUE(Succeeds(Connect(*socket, LocalAddress(first))));
        const unsigned int port = LocalPort(*socket);
        ASSERT_EQ(SetOption(*socket, Winsock::OptionReceiveTimeout, 20'000), 0);
        for (const OwnedSocket* peer : {&second, &first}) {
            EXPECT_TRUE(Succeeds(Connect(*socket, LocalAddress(*peer))));
            EXPECT_EQ(LocalPort(*socket), port);
            EXPECT_TRUE(Succeeds(SendTo(*peer, "hello", Loopback(port)), 5));
            EXPECT_EQ(Receive(*socket), "hello");
        }
    }
}

TEST_F(DatagramPeer, ChangesOverIpv6WhileThePortStays) {
    const OwnedSocket socket = NewDatagram(Winsock::FamilyIpv6);
    const OwnedSocket first = NewBoundIpv6Datagram();
    const OwnedSocket second = NewBoundIpv6Datagram();
    ASSERT_TRUE(Succeeds(Connect(socket, LocalIpv6Address(first))));
    ASSERT_EQ(SetOption(socket, Winsock::OptionReceiveTimeout, 20'000), 0);
    const Winsock::AddressIpv6 local = LocalIpv6Address(socket);
    ASSERT_TRUE(Succeeds(SendTo(first, "early", local), 5));
    AwaitReadable(socket.Get());
    ASSERT_TRUE(Succeeds(Connect(socket, LocalIpv6Address(second))));
    ASSERT_TRUE(Succeeds(SendTo(second, "now", local), 3));
    EXPECT_TRUE(Succeeds(TryReceive(socket), 3, "a datagram from before connecting"));
}

TEST_F(DatagramPeer, HasAPort) {
    const OwnedSocket socket = NewDatagram();
    EXPECT_TRUE(FailsWith(10049, Connect(socket, Loopback(0)), "a peer without a port"));
    EXPECT_TRUE(FailsWith(10049, Connect(NewDatagram(Winsock::FamilyIpv6), LoopbackIpv6(0)),
                          "a peer without a port"));
    Winsock::AddressIpv4 name = {};
    int length = sizeof name;
    EXPECT_TRUE(FailsWith(10057, Winsock::getpeername(socket.Get(), &name, &length)));
    EXPECT_TRUE(FailsWith(10057, Send(socket, "x"), "a datagram to a peer without a port"));
}

TEST_F(DatagramPeer, HasAnAddress) {
    const OwnedSocket socket = NewDatagram();
    EXPECT_TRUE(
        FailsWith(10049, Connect(socket, Ipv4(0, 0, 0, 0, 9)), "a peer without an address"));
    EXPECT_TRUE(FailsWith(10057, Send(socket, "x"), "a datagram to a peer without an address"));
}

}  // namespace
}  // namespace Conformance

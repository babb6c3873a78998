#include <cstring>

#include "Provocation.h"
#include "Scene.h"
#include "WineAnswers.h"

namespace Conformance {
namespace {

using Binding = Started;

TEST_F(Binding, RefusesShortAndNullAddresses) {
    const Winsock::AddressIpv4 ipv4 = Loopback(0);
    const Winsock::AddressIpv6 ipv6 = LoopbackIpv6(0);
    const OwnedSocket first = NewStream();
    const OwnedSocket second = NewStream(Winsock::FamilyIpv6);
    for (const int length : {-1, 0, 1, 15}) {
        EXPECT_TRUE(FailsWith(10014, Winsock::bind(first.Get(), &ipv4, length),
                              "binding with a negative length"))
            << length;
    }
    EXPECT_TRUE(FailsWith(10014, Winsock::bind(first.Get(), nullptr, 16)));
    EXPECT_TRUE(FailsWith(10014, Winsock::bind(second.Get(), &ipv6, 27)));
    EXPECT_TRUE(FailsWith(10014, Winsock::bind(second.Get(), &ipv4, 16),
                          "an IPv4 address for an IPv6 socket"));
}

TEST_F(Binding, RefusesOtherFamilies) {
    Winsock::AddressStorage storage = {};
    for (const int family : {0, 1, 10, 23, 0xDEAD}) {
        storage.family = static_cast<unsigned short>(family);
        EXPECT_TRUE(
            FailsWith(10047, Bind(NewStream(), storage), "binding to an address of another family"))
            << family;
    }
    storage.family = 2;
    EXPECT_TRUE(FailsWith(10047, Bind(NewStream(Winsock::FamilyIpv6), storage),
                          "an IPv4 address for an IPv6 socket"));
}

TEST_F(Binding, TakesALongerLength) {
    Winsock::AddressStorage storage = {};
    const Winsock::AddressIpv4 address = Loopback(0);
    std::memcpy(&storage, &address, sizeof address);
    EXPECT_TRUE(Succeeds(Bind(NewStream(), storage)));
    EXPECT_TRUE(Succeeds(Bind(NewDatagram(), storage)));
}

TEST_F(Binding, RefusesAnAddressThatIsNotLocal) {
    EXPECT_TRUE(FailsWith(10049, Bind(NewStream(), Ipv4(192, 0, 2, 1, 0))));
}

TEST_F(Binding, HappensOnce) {
    EXPECT_TRUE(FailsWith(10022, Bind(NewBoundStream(), Loopback(0))));
    EXPECT_TRUE(FailsWith(10022, Bind(NewBoundDatagram(), Loopback(0))));
    for (const OwnedSocket& socket : {NewBoundStream(), NewListener(), NewBoundDatagram()})
        EXPECT_TRUE(FailsWith(10022, Bind(socket, LocalAddress(socket))));
    EXPECT_TRUE(FailsWith(10022, Bind(NewConnectedPair().client, Loopback(0))));
    EXPECT_TRUE(FailsWith(10022, Bind(NewConnectedPair().server, Loopback(0))));
    const OwnedSocket datagram = NewDatagram();
    EXPECT_TRUE(Succeeds(Connect(datagram, Loopback(9))));
    EXPECT_TRUE(FailsWith(10022, Bind(datagram, Loopback(0))));
}

TEST_F(Binding, ARefusedOneCanBeRepeatedElsewhere) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket socket = NewStream();
    EXPECT_TRUE(FailsWith(10048, Bind(socket, LocalAddress(listener))));
    EXPECT_TRUE(Succeeds(Bind(socket, Loopback(0))));
}

using BindingLocalName = Started;

TEST_F(BindingLocalName, AnUnboundSocketHasNoneAndTheRoomIsUntouched) {
    for (const OwnedSocket& socket : {NewStream(), NewDatagram()}) {
        Winsock::AddressIpv4 address = Ipv4(9, 9, 9, 9, 99);
        int length = sizeof address;
        EXPECT_TRUE(FailsWith(10022, Winsock::getsockname(socket.Get(), &address, &length)));
        EXPECT_EQ(address.address[0], 9);
        EXPECT_EQ(length, 16);
    }
}

TEST_F(BindingLocalName, IsWrittenInWinsocksForm) {
    Winsock::AddressStorage storage;
    std::memset(&storage, 0x55, sizeof storage);
    int length = sizeof storage;
    const OwnedSocket socket = NewBoundStream();
    ASSERT_TRUE(Succeeds(Winsock::getsockname(socket.Get(), &storage, &length)));
    EXPECT_EQ(length, 16);
    EXPECT_EQ(storage.family, 2);
    EXPECT_EQ(storage.bytes[2], 127);
    EXPECT_EQ(storage.bytes[14], 0x55);
}

TEST_F(BindingLocalName, OfAnIpv6SocketHasWinsocksFamily) {
    const OwnedSocket socket = NewDatagram(Winsock::FamilyIpv6);
    ASSERT_TRUE(Succeeds(Bind(socket, LoopbackIpv6(0))));
    Winsock::AddressStorage storage = {};
    int length = sizeof storage;
    ASSERT_TRUE(Succeeds(Winsock::getsockname(socket.Get(), &storage, &length)));
    EXPECT_EQ(length, 28);
    EXPECT_EQ(storage.family, 23);
    EXPECT_EQ(storage.bytes[21], 1);
}

TEST_F(BindingLocalName, NeedsRoom) {
    const OwnedSocket socket = NewBoundStream();
    Winsock::AddressIpv4 address = {};
    int length = 15;
    EXPECT_TRUE(FailsWith(10014, Winsock::getsockname(socket.Get(), &address, &length)));
    EXPECT_EQ(length, 15);
    EXPECT_EQ(address.family, 0);
    if (WineGivesNoAnswer("the name of a socket for null")) return;
    EXPECT_TRUE(FailsWith(10014, Winsock::getsockname(socket.Get(), &address, nullptr)));
    EXPECT_TRUE(FailsWith(10014, Winsock::getsockname(socket.Get(), nullptr, &length)));
}

TEST_F(BindingLocalName, ConnectingGivesOne) {
    EXPECT_NE(LocalPort(NewConnectedPair().client), 0U);
    const OwnedSocket datagram = NewDatagram();
    ASSERT_TRUE(Succeeds(Connect(datagram, Loopback(9))));
    EXPECT_NE(LocalPort(datagram), 0U);
}

using BindingPeerName = Started;

TEST_F(BindingPeerName, NeedsAConnection) {
    Winsock::AddressIpv4 address = {};
    int length = sizeof address;
    for (const OwnedSocket& socket :
         {NewStream(), NewBoundStream(), NewListener(), NewDatagram(), NewBoundDatagram()}) {
        EXPECT_TRUE(FailsWith(10057, Winsock::getpeername(socket.Get(), &address, &length)));
    }
}

TEST_F(BindingPeerName, IsTheOtherSidesLocalName) {
    const Pair pair = NewConnectedPair();
    Winsock::AddressIpv4 address = {};
    int length = sizeof address;
    ASSERT_TRUE(Succeeds(Winsock::getpeername(pair.server.Get(), &address, &length)));
    EXPECT_EQ(PortOf(address), LocalPort(pair.client));
    EXPECT_EQ(length, 16);
    length = 15;
    EXPECT_TRUE(FailsWith(10014, Winsock::getpeername(pair.server.Get(), &address, &length)));
    EXPECT_EQ(length, 15);
}

using BindingAndListening = Started;

TEST_F(BindingAndListening, NeedsABoundStream) {
    EXPECT_TRUE(FailsWith(10022, Winsock::listen(NewStream().Get(), 5)));
    EXPECT_TRUE(FailsWith(10045, Winsock::listen(NewDatagram().Get(), 5),
                          "listening on what cannot listen"));
    EXPECT_TRUE(FailsWith(10045, Winsock::listen(NewBoundDatagram().Get(), 5)));
    EXPECT_TRUE(FailsWith(10056, Winsock::listen(NewConnectedPair().client.Get(), 5),
                          "listening on what cannot listen"));
    EXPECT_TRUE(FailsWith(10056, Winsock::listen(NewConnectedPair().server.Get(), 5),
                          "listening on what cannot listen"));
}

TEST_F(BindingAndListening, CanBeRepeated) {
    const OwnedSocket listener = NewListener();
    EXPECT_TRUE(Succeeds(Winsock::listen(listener.Get(), 5)));
    EXPECT_TRUE(Succeeds(Winsock::listen(listener.Get(), 0x7FFFFFFF)));
}

using BindingReuse = Started;

OwnedSocket NewReusing(OwnedSocket socket) {
    EXPECT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReuseAddress, 1)));
    return socket;
}

TEST_F(BindingReuse, ATakenPortIsRefusedWithoutTheOption) {
    const OwnedSocket bound = NewBoundStream();
    const OwnedSocket listener = NewListener();
    const OwnedSocket datagram = NewBoundDatagram();
    EXPECT_TRUE(FailsWith(10048, Bind(NewStream(), LocalAddress(bound))));
    EXPECT_TRUE(FailsWith(10048, Bind(NewStream(), LocalAddress(listener))));
    EXPECT_TRUE(FailsWith(10048, Bind(NewDatagram(), LocalAddress(datagram))));
}

TEST_F(BindingReuse, TheOptionOnTheSecondOnlyIsNoPermission) {
    const OwnedSocket bound = NewBoundStream();
    const OwnedSocket listener = NewListener();
    const OwnedSocket datagram = NewBoundDatagram();
    EXPECT_TRUE(FailsWith(10013, Bind(NewReusing(NewStream()), LocalAddress(bound))));
    EXPECT_TRUE(FailsWith(10013, Bind(NewReusing(NewStream()), LocalAddress(listener))));
    EXPECT_TRUE(FailsWith(10013, Bind(NewReusing(NewDatagram()), LocalAddress(datagram))));
}

TEST_F(BindingReuse, ABoundPortIsNotFreeForOtherProgramsThatReuse) {
    const OwnedSocket bound = NewBoundStream();
    EXPECT_TRUE(FindsPortTakenThoughReusing(LocalPort(bound)));
    const OwnedSocket listener = NewListener();
    EXPECT_TRUE(FindsPortTakenThoughReusing(LocalPort(listener)));
}

TEST_F(BindingReuse, AClientsBoundPortCanBeBoundAgainAtOnce) {
    const OwnedSocket listener = NewListener();
    OwnedSocket client = NewBoundStream();
    const Winsock::AddressIpv4 address = LocalAddress(client);
    ASSERT_TRUE(Succeeds(Connect(client, LocalAddress(listener))));
    OwnedSocket server = Accept(listener);
    client.Close();
    ASSERT_EQ(TryReceive(server), 0);
    server.Close();
    ASSERT_TRUE(FindsPortTaken(PortOf(address)) || EndedConnectionsLeavePortsFree());
    EXPECT_TRUE(Succeeds(Bind(NewStream(), address)));
}

TEST_F(BindingReuse, TheOptionOnTheFirstOnlyIsNotEnough) {
    const OwnedSocket stream = NewReusing(NewStream());
    const OwnedSocket datagram = NewReusing(NewDatagram());
    ASSERT_TRUE(Succeeds(Bind(stream, Loopback(0))));
    ASSERT_TRUE(Succeeds(Bind(datagram, Loopback(0))));
    EXPECT_TRUE(FailsWith(10048, Bind(NewStream(), LocalAddress(stream))));
    EXPECT_TRUE(FailsWith(10048, Bind(NewDatagram(), LocalAddress(datagram))));
}

TEST_F(BindingReuse, TheOptionOnBothLetsBothListen) {
    const OwnedSocket first = NewReusing(NewStream());
    const OwnedSocket second = NewReusing(NewStream());
    const OwnedSocket third = NewReusing(NewStream());
    ASSERT_TRUE(Succeeds(Bind(first, Loopback(0))));
    EXPECT_TRUE(Succeeds(Bind(second, LocalAddress(first))));
    EXPECT_TRUE(Succeeds(Winsock::listen(first.Get(), 5)));
    if (WineGivesNoAnswer("two listeners that reuse")) return;
    EXPECT_TRUE(Succeeds(Winsock::listen(second.Get(), 5)));
    EXPECT_TRUE(Succeeds(Bind(third, LocalAddress(first))));
    EXPECT_TRUE(Succeeds(Winsock::listen(third.Get(), 5)));
}

TEST_F(BindingReuse, TheOptionOnBothLetsBothDatagramSocketsBind) {
    const OwnedSocket first = NewReusing(NewDatagram());
    ASSERT_TRUE(Succeeds(Bind(first, Loopback(0))));
    EXPECT_TRUE(Succeeds(Bind(NewReusing(NewDatagram()), LocalAddress(first))));
}

TEST_F(BindingReuse, TheOptionSwitchedOffAgainIsNoOption) {
    const OwnedSocket bound = NewReusing(NewStream());
    ASSERT_TRUE(Succeeds(Bind(bound, Loopback(0))));
    const OwnedSocket second = NewReusing(NewStream());
    ASSERT_TRUE(Succeeds(SetOption(second, Winsock::OptionReuseAddress, 0)));
    EXPECT_TRUE(FailsWith(10048, Bind(second, LocalAddress(bound))));
}

TEST_F(BindingReuse, TheSamePortOfAnotherLocalAddressIsFree) {
    const OwnedSocket bound = NewBoundStream();
    EXPECT_TRUE(Succeeds(Bind(NewStream(), Ipv4(127, 0, 0, 2, LocalPort(bound)))));
    EXPECT_TRUE(Succeeds(Bind(NewReusing(NewStream()), Ipv4(127, 0, 0, 3, LocalPort(bound)))));
}

TEST_F(BindingReuse, APortIsFreeAgainWhenItsSocketIsClosed) {
    OwnedSocket bound = NewListener();
    const Winsock::AddressIpv4 address = LocalAddress(bound);
    bound.Close();
    EXPECT_TRUE(Succeeds(Bind(NewStream(), address)));
}

// Leaves behind what a server leaves that closes first and ends.
Winsock::AddressIpv4 ServeOnceAndClose() {
    OwnedSocket listener = NewListener();
    const Winsock::AddressIpv4 address = LocalAddress(listener);
    const RawPeer client = RawPeer::ConnectedTo(PortOf(address));
    Accept(listener).Close();
    EXPECT_EQ(client.Receive(1), "");
    return address;
}

TEST_F(BindingReuse, AServerCanStartAgainAtOnceThoughItsConnectionsHaveJustEnded) {
    const Winsock::AddressIpv4 address = ServeOnceAndClose();
    ASSERT_TRUE(FindsPortTaken(PortOf(address)) || EndedConnectionsLeavePortsFree());
    const OwnedSocket again = NewStream();
    EXPECT_TRUE(Succeeds(Bind(again, address)));
    EXPECT_TRUE(Succeeds(Winsock::listen(again.Get(), 5)));
    EXPECT_TRUE(FailsWith(10048, Bind(NewStream(), address)));
}

TEST_F(BindingReuse, AServerWithTheOptionCanStartAgainAtOnceToo) {
    const Winsock::AddressIpv4 address = ServeOnceAndClose();
    const OwnedSocket again = NewReusing(NewStream());
    EXPECT_TRUE(Succeeds(Bind(again, address)));
    EXPECT_TRUE(Succeeds(Winsock::listen(again.Get(), 5)));
}

TEST_F(BindingReuse, AServerCanStartAgainWhileItsConnectionsGoOn) {
    OwnedSocket listener = NewListener();
    const Winsock::AddressIpv4 address = LocalAddress(listener);
    const RawPeer client = RawPeer::ConnectedTo(PortOf(address));
    const OwnedSocket server = Accept(listener);
    listener.Close();
    const OwnedSocket again = NewStream();
    EXPECT_TRUE(Succeeds(Bind(again, address)));
    EXPECT_TRUE(Succeeds(Winsock::listen(again.Get(), 5)));
    EXPECT_TRUE(Succeeds(Send(server, "still here"), 10));
    EXPECT_EQ(client.Receive(10), "still here");
}

}  // namespace
}  // namespace Conformance

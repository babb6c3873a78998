// Groups on several interfaces, and sockets that are bound to an address of one of them.
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstring>
#include <string>

#include "NetworkInterface.h"
#include "OwnNetwork.h"
#include "TakenAddress.h"
#include "conformance/DatagramScene.h"
#include "conformance/Scene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

constexpr unsigned char Wire[4] = {192, 0, 2, 1};
constexpr unsigned char Inner[4] = {127, 0, 0, 1};

Winsock::AddressIpv4 At(const unsigned char (&octets)[4], unsigned int port) {
    return Ipv4(octets[0], octets[1], octets[2], octets[3], port);
}

Winsock::MembershipIpv4 GroupOn(const unsigned char (&interface)[4]) {
    Winsock::MembershipIpv4 group = {{239, 1, 2, 3}, {}};
    std::memcpy(group.interfaceAddress, interface, sizeof interface);
    return group;
}

OwnedSocket NewLimited() {
    OwnedSocket socket = NewDatagram();
    EXPECT_EQ(SetOption(socket, Winsock::OptionReceiveTimeout, 20'000), 0);
    return socket;
}

// An interface beside the loopback interface.
struct Host {
    NetworkInterface wire{"wire"};
    OwnedSocket sender = NewDatagram();

    Host() {
        EXPECT_TRUE(wire.IsMade());
        wire.AddIpv4("192.0.2.1");
        EXPECT_EQ(Bind(sender, At(Wire, 0)), 0);
    }
    void Send(const std::string& text, const unsigned char (&interface)[4],
              unsigned int port) const {
        ASSERT_EQ(::setsockopt(static_cast<int>(sender.Get()), IPPROTO_IP, IP_MULTICAST_IF,
                               interface, sizeof interface),
                  0);
        const int length = static_cast<int>(text.size());
        EXPECT_TRUE(Succeeds(SendTo(sender, text, Ipv4(239, 1, 2, 3, port)), length));
    }
    void ExpectOnce(const OwnedSocket& socket, const unsigned char (&interface)[4]) const {
        Send("to all", interface, LocalPort(socket));
        EXPECT_EQ(Receive(socket), "to all");
        EXPECT_EQ(BytesAvailable(socket), 0U);
    }
};

using BoundGroupInterface = Started;

TEST_F(BoundGroupInterface, NeedNotBeTheLoopbackInterface) {
    InOwnNetwork([] {
        const Host host;
        const OwnedSocket socket = NewLimited();
        ASSERT_TRUE(Succeeds(Bind(socket, At(Wire, 0))));
        ASSERT_TRUE(Succeeds(SetMembership(socket, Join, GroupOn(Wire))));
        host.ExpectOnce(socket, Wire);
    });
}

TEST_F(BoundGroupInterface, MayBeOneOfTwoOnWhichTheGroupIsHeardOnce) {
    InOwnNetwork([] {
        const Host host;
        for (const bool boundFirst : {true, false}) {
            const OwnedSocket socket = NewLimited();
            if (boundFirst) {
                ASSERT_TRUE(Succeeds(Bind(socket, At(Wire, 0))));
            }
            ASSERT_TRUE(Succeeds(SetMembership(socket, Join, GroupOn(Wire))));
            // One socket beside it is enough for both.
            const SystemCalls::CountedCall closed(SystemCalls::SystemCall::Close);
            ASSERT_TRUE(Succeeds(SetMembership(socket, Join, GroupOn(Inner))));
            if (!boundFirst) {
                ASSERT_TRUE(Succeeds(Bind(socket, At(Wire, 0))));
            }
            EXPECT_EQ(closed.Seen(), 1U);
            host.ExpectOnce(socket, Wire);
            host.ExpectOnce(socket, Inner);
            ASSERT_TRUE(Succeeds(SetMembership(socket, Leave, GroupOn(Wire))));
            EXPECT_TRUE(FailsWith(10022, SetMembership(socket, Leave, GroupOn(Wire))));
            host.ExpectOnce(socket, Inner);
            ASSERT_TRUE(Succeeds(SetMembership(socket, Leave, GroupOn(Inner))));
        }
    });
}

TEST_F(BoundGroupInterface, OfASocketOnAllAddressesNeedsNoOtherSocket) {
    InOwnNetwork([] {
        const Host host;
        const OwnedSocket socket = NewLimited();
        const SystemCalls::CountedCall others(SystemCalls::SystemCall::Socket);
        ASSERT_TRUE(Succeeds(SetMembership(socket, Join, GroupOn(Wire))));
        ASSERT_TRUE(Succeeds(Bind(socket, Ipv4(0, 0, 0, 0, 0))));
        EXPECT_EQ(others.Seen(), 0U);
        host.ExpectOnce(socket, Wire);
    });
}

// The group was heard beside the peer, and is then heard by the socket as before. The system drops
// a port that it chose together with the peer.
TEST_F(BoundGroupInterface, IsHeardOnceWhenThePeerOfASocketOnAllAddressesWasTakenAway) {
    InOwnNetwork([] {
        const Host host;
        for (const unsigned int port : {0U, 4711U}) {
            const OwnedSocket socket = NewLimited();
            ASSERT_TRUE(Succeeds(Bind(socket, Ipv4(0, 0, 0, 0, port))));
            const Winsock::AddressIpv4 name = LocalAddress(socket);
            ASSERT_TRUE(Succeeds(SetMembership(socket, Join, GroupOn(Wire))));
            ASSERT_TRUE(Succeeds(Connect(socket, Loopback(9))));
            ASSERT_TRUE(Succeeds(Connect(socket, LocalAddress(host.sender))));
            host.ExpectOnce(socket, Wire);
            ASSERT_TRUE(Succeeds(Connect(socket, Ipv4(0, 0, 0, 0, 0))));
            host.ExpectOnce(socket, Wire);
            EXPECT_EQ(LocalPort(socket), PortOf(name));
            EXPECT_TRUE(FailsWith(10048, Bind(NewDatagram(), name)));
            const OwnedSocket sharing = NewDatagram();
            ASSERT_TRUE(Succeeds(SetOption(sharing, Winsock::OptionReuseAddress, 1)));
            EXPECT_TRUE(FailsWith(10013, Bind(sharing, name)));
        }
    });
}

TEST_F(BoundGroupInterface, IsJoinedAndLeftAsEverWhenThePeerWasTakenAway) {
    InOwnNetwork([] {
        const Host host;
        const OwnedSocket socket = NewLimited();
        ASSERT_TRUE(Succeeds(Bind(socket, Ipv4(0, 0, 0, 0, 0))));
        ASSERT_TRUE(Succeeds(SetMembership(socket, Join, GroupOn(Wire))));
        ASSERT_TRUE(Succeeds(Connect(socket, Loopback(9))));
        ASSERT_TRUE(Succeeds(Connect(socket, Ipv4(0, 0, 0, 0, 0))));
        EXPECT_TRUE(FailsWith(10049, SetMembership(socket, Join, GroupOn(Wire))));
        ASSERT_TRUE(Succeeds(SetMembership(socket, Leave, GroupOn(Wire))));
        EXPECT_TRUE(FailsWith(10022, SetMembership(socket, Leave, GroupOn(Wire))));
        ASSERT_TRUE(Succeeds(SetMembership(socket, Join, GroupOn(Wire))));
        host.ExpectOnce(socket, Wire);
    });
}

// Whoever has bound the group's address and does not share it.
TEST_F(BoundGroupInterface, HasNoPortForTheGroupWhereItIsTaken) {
    const OwnedSocket socket = NewBoundDatagram();
    {
        const TakenAddress taken(Ipv4(239, 1, 2, 3, LocalPort(socket)));
        EXPECT_TRUE(FailsWith(10048, SetMembership(socket, Join, GroupOn(Inner))));
    }
    EXPECT_TRUE(FailsWith(10022, SetMembership(socket, Leave, GroupOn(Inner))));
    EXPECT_TRUE(Succeeds(SetMembership(socket, Join, GroupOn(Inner))));
}

}  // namespace
}  // namespace Conformance

// Groups of IPv6, on interfaces of the test's own, and sockets that are bound to an address there.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
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

constexpr const char* Address = "2001:db8::1";
constexpr const char* PeersAddress = "2001:db8::2";
constexpr const char* GroupAddress = "ff05::4711";

Winsock::AddressIpv6 Ipv6(const char* text, unsigned int port, unsigned int scope = 0) {
    Winsock::AddressIpv6 address = LoopbackIpv6(port);
    EXPECT_EQ(::inet_pton(AF_INET6, text, address.address), 1) << text;
    address.scope = scope;
    return address;
}

Winsock::MembershipIpv6 GroupOn(unsigned int interface, const char* group = GroupAddress) {
    Winsock::MembershipIpv6 request = {{}, interface};
    EXPECT_EQ(::inet_pton(AF_INET6, group, request.group), 1);
    return request;
}

// The system takes its time with a new address.
OwnedSocket NewIpv6Receiver(const Winsock::AddressIpv6& address) {
    OwnedSocket socket = NewDatagram(Winsock::FamilyIpv6);
    EXPECT_EQ(SetOption(socket, Winsock::OptionReceiveTimeout, 20'000), 0);
    EXPECT_EQ(RepeatWhile(10049, [&] { return Bind(socket, address); }), 0);
    return socket;
}

unsigned int Ipv6Port(const OwnedSocket& socket) {
    const Winsock::AddressIpv6 address = LocalIpv6Address(socket);
    return address.port[0] * 256U + address.port[1];
}

// Sends to the group, over the interface, from a socket that is bound to the address.
void SendFrom(const OwnedSocket& sender, const std::string& text, unsigned int interface,
              unsigned int port, const char* group = GroupAddress) {
    ASSERT_EQ(::setsockopt(static_cast<int>(sender.Get()), IPPROTO_IPV6, IPV6_MULTICAST_IF,
                           &interface, sizeof interface),
              0);
    EXPECT_TRUE(Succeeds(SendTo(sender, text, Ipv6(group, port)), static_cast<int>(text.size())));
}

// Two interfaces that take in what is sent to the group, since somebody is a member on both, and a
// socket that is bound to an address of the first.
struct Wires {
    NetworkInterface wire{"wire"};
    NetworkInterface other{"other"};
    OwnedSocket socket;
    OwnedSocket peer;
    OwnedSocket member = NewDatagram(Winsock::FamilyIpv6);
    unsigned int port = 0;

    Wires() {
        EXPECT_TRUE(wire.IsMade() && other.IsMade());
        wire.AddIpv6(Address);
        wire.AddIpv6(PeersAddress);
        other.AddIpv6("2001:db8:1::1");
        socket = NewIpv6Receiver(Ipv6(Address, 0));
        peer = NewIpv6Receiver(Ipv6(PeersAddress, 0));
        port = Ipv6Port(socket);
        for (const NetworkInterface* interface : {&wire, &other})
            EXPECT_EQ(SetMembership(member, Join, GroupOn(interface->Index())), 0);
    }
    void Send(const std::string& text, const NetworkInterface& interface,
              const char* group = GroupAddress) const {
        SendFrom(peer, text, interface.Index(), port, group);
    }
    // Whether nothing else has come before what is sent now.
    void ExpectNothingElse() const {
        EXPECT_EQ(SendTo(peer, "the end", Ipv6(Address, port)), 7);
        EXPECT_EQ(Receive(socket), "the end");
    }
};

using BoundGroupIpv6 = Started;

TEST_F(BoundGroupIpv6, ReachesTheSocketBesideWhatIsSentToItsAddress) {
    InOwnNetwork([] {
        const Wires wires;
        ASSERT_TRUE(Succeeds(SetMembership(wires.socket, Join, GroupOn(wires.wire.Index()))));
        wires.Send("to all", wires.wire);
        const auto received = ReceiveFrom<Winsock::AddressIpv6>(wires.socket);
        EXPECT_EQ(received.buffer.substr(0, 6), "to all");
        const Winsock::AddressIpv6 sender = LocalIpv6Address(wires.peer);
        EXPECT_EQ(std::memcmp(&received.sender, &sender, sizeof sender), 0);
        wires.ExpectNothingElse();
    });
}

TEST_F(BoundGroupIpv6, IsHeardOnTheInterfaceOnWhichItWasJoined) {
    InOwnNetwork([] {
        const Wires wires;
        for (const NetworkInterface* joined : {&wires.wire, &wires.other}) {
            const NetworkInterface& another = joined == &wires.wire ? wires.other : wires.wire;
            ASSERT_TRUE(Succeeds(SetMembership(wires.socket, Join, GroupOn(joined->Index()))));
            wires.Send("elsewhere", another);
            wires.Send("here", *joined);
            EXPECT_EQ(Receive(wires.socket), "here");
            ASSERT_TRUE(Succeeds(SetMembership(wires.socket, Leave, GroupOn(joined->Index()))));
        }
        wires.ExpectNothingElse();
    });
}

TEST_F(BoundGroupIpv6, IsHeardOnceOnEachInterfaceOnWhichItWasJoined) {
    InOwnNetwork([] {
        const Wires wires;
        for (const NetworkInterface* interface : {&wires.wire, &wires.other}) {
            const Winsock::MembershipIpv6 group = GroupOn(interface->Index());
            ASSERT_TRUE(Succeeds(SetMembership(wires.socket, Join, group)));
            EXPECT_TRUE(FailsWith(10049, SetMembership(wires.socket, Join, group)));
        }
        wires.Send("here", wires.wire);
        EXPECT_EQ(Receive(wires.socket), "here");
        wires.Send("there", wires.other);
        EXPECT_EQ(Receive(wires.socket), "there");
        wires.ExpectNothingElse();
        ASSERT_TRUE(Succeeds(SetMembership(wires.socket, Leave, GroupOn(wires.wire.Index()))));
        wires.Send("here", wires.wire);
        wires.Send("there", wires.other);
        EXPECT_EQ(Receive(wires.socket), "there");
        wires.ExpectNothingElse();
    });
}

TEST_F(BoundGroupIpv6, IsHeardOnTheInterfaceOnWhichItWasJoinedAfterAnother) {
    InOwnNetwork([] {
        const Wires wires;
        for (const NetworkInterface* interface : {&wires.other, &wires.wire})
            ASSERT_TRUE(Succeeds(SetMembership(wires.socket, Join, GroupOn(interface->Index()))));
        wires.Send("here", wires.wire);
        EXPECT_EQ(Receive(wires.socket), "here");
        wires.Send("there", wires.other);
        EXPECT_EQ(Receive(wires.socket), "there");
        wires.ExpectNothingElse();
    });
}

TEST_F(BoundGroupIpv6, IsLookedForOnEachInterfaceOnce) {
    InOwnNetwork([] {
        const Wires wires;
        const SystemCalls::FailingCall unknown(SystemCalls::SystemCall::Getsourcefilter,
                                               EADDRNOTAVAIL);
        ASSERT_TRUE(Succeeds(SetMembership(wires.socket, Join, GroupOn(wires.wire.Index()))));
        EXPECT_EQ(unknown.Seen(), 3U);
    });
}

TEST_F(BoundGroupIpv6, MayBeJoinedOnTheSystemsChoiceOfInterface) {
    InOwnNetwork([] {
        const Wires wires;
        ASSERT_TRUE(Succeeds(SetMembership(wires.socket, Join, GroupOn(0))));
        EXPECT_TRUE(FailsWith(10049, SetMembership(wires.socket, Join, GroupOn(0))));
        const unsigned int systems = 0;
        SendFrom(wires.peer, "to all", systems, wires.port);
        EXPECT_EQ(Receive(wires.socket), "to all");
        wires.ExpectNothingElse();
        ASSERT_TRUE(Succeeds(SetMembership(wires.socket, Leave, GroupOn(0))));
        EXPECT_TRUE(FailsWith(10022, SetMembership(wires.socket, Leave, GroupOn(0))));
    });
}

TEST_F(BoundGroupIpv6, IsNotHeardBySomebodyElseOnAllAddresses) {
    InOwnNetwork([] {
        const Wires wires;
        const OwnedSocket stranger = NewIpv6Receiver(Ipv6("::", 0));
        SendFrom(wires.peer, "to all", wires.wire.Index(), Ipv6Port(stranger));
        EXPECT_EQ(SendTo(wires.peer, "to one", Ipv6(Address, Ipv6Port(stranger))), 6);
        EXPECT_EQ(Receive(stranger), "to one");
    });
}

// Whoever has bound the group's address and does not share it.
TEST_F(BoundGroupIpv6, FailsToBeJoinedWhereItsPortIsTaken) {
    InOwnNetwork([] {
        const Wires wires;
        const Winsock::MembershipIpv6 group = GroupOn(wires.wire.Index());
        {
            const TakenAddress taken(Ipv6(GroupAddress, wires.port));
            EXPECT_TRUE(FailsWith(10048, SetMembership(wires.socket, Join, group)));
        }
        EXPECT_TRUE(FailsWith(10022, SetMembership(wires.socket, Leave, group)));
        ASSERT_TRUE(Succeeds(SetMembership(wires.socket, Join, group)));
        wires.Send("to all", wires.wire);
        EXPECT_EQ(Receive(wires.socket), "to all");
    });
}

TEST_F(BoundGroupIpv6, IsHeardThoughTheSystemDoesNotTellOfItsInterfaces) {
    InOwnNetwork([] {
        const Wires wires;
        {
            const SystemCalls::FailingCall fails(SystemCalls::SystemCall::IfNameindex, ENOBUFS);
            ASSERT_TRUE(Succeeds(SetMembership(wires.socket, Join, GroupOn(wires.wire.Index()))));
            EXPECT_EQ(fails.Seen(), 1U);
        }
        wires.Send("to all", wires.wire);
        EXPECT_EQ(Receive(wires.socket), "to all");
    });
}

// Groups that differ in any one word of their addresses.
TEST_F(BoundGroupIpv6, IsNotAnotherGroup) {
    InOwnNetwork([] {
        const Wires wires;
        constexpr const char* groups[] = {"ff05::4711", "ff15::4711", "ff05:0:1::4711",
                                          "ff05::1:0:4711", "ff05::4712"};
        for (const char* group : groups) {
            const Winsock::MembershipIpv6 request = GroupOn(wires.wire.Index(), group);
            ASSERT_TRUE(Succeeds(SetMembership(wires.socket, Join, request))) << group;
            wires.Send(group, wires.wire, group);
            EXPECT_EQ(Receive(wires.socket), group);
        }
        wires.ExpectNothingElse();
    });
}

// Strangers with the peer's port whose addresses differ from the peer's in any one word.
TEST_F(BoundGroupIpv6, OfAConnectedSocketIsHeardFromThePeerOnly) {
    InOwnNetwork([] {
        Wires wires;
        const Winsock::AddressIpv6 peer = LocalIpv6Address(wires.peer);
        ASSERT_TRUE(Succeeds(SetMembership(wires.socket, Join, GroupOn(wires.wire.Index()))));
        ASSERT_TRUE(Succeeds(Connect(wires.socket, peer)));
        for (const char* address :
             {"2001:db9::2", "2001:db8:0:1::2", "2001:db8::1:0:2", "2001:db8::3"}) {
            wires.wire.AddIpv6(address);
            const OwnedSocket stranger = NewIpv6Receiver(Ipv6(address, Ipv6Port(wires.peer)));
            SendFrom(stranger, "strange", wires.wire.Index(), wires.port);
        }
        SendFrom(NewIpv6Receiver(Ipv6(PeersAddress, 0)), "strange", wires.wire.Index(), wires.port);
        wires.Send("from the peer", wires.wire);
        EXPECT_EQ(Receive(wires.socket), "from the peer");
        wires.ExpectNothingElse();
    });
}

TEST_F(BoundGroupIpv6, StaysOnItsInterfaceWithASocketThatIsBoundOrConnectedAfterwards) {
    InOwnNetwork([] {
        const Wires wires;
        for (const bool connected : {false, true}) {
            const OwnedSocket socket = NewDatagram(Winsock::FamilyIpv6);
            ASSERT_EQ(SetOption(socket, Winsock::OptionReceiveTimeout, 20'000), 0);
            ASSERT_TRUE(Succeeds(SetMembership(socket, Join, GroupOn(wires.other.Index()))));
            const Winsock::AddressIpv6 address = Ipv6(connected ? "::" : Address, 0);
            ASSERT_TRUE(Succeeds(Bind(socket, address)));
            if (connected) {
                ASSERT_TRUE(Succeeds(Connect(socket, LocalIpv6Address(wires.peer))));
            }
            const unsigned int port = Ipv6Port(socket);
            SendFrom(wires.peer, "elsewhere", wires.wire.Index(), port);
            SendFrom(wires.peer, "here", wires.other.Index(), port);
            EXPECT_EQ(Receive(socket), "here");
            EXPECT_EQ(BytesAvailable(socket), 0U);
        }
    });
}

}  // namespace
}  // namespace Conformance

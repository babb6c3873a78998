// Who is a member of a group, and what else a socket keeps, that is bound to an address.
#include <netinet/in.h>

#include <cerrno>

#include "BoundGroupScene.h"
#include "conformance/Provocation.h"
#include "support/FailingAllocations.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

TEST_F(BoundGroup, ReachesTheSocketBesideWhatIsSentToItsAddress) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    SendToGroup("to all");
    EXPECT_EQ(Receive(receiver_), "to all");
    SendToAddress("to one");
    EXPECT_EQ(Receive(receiver_), "to one");
}

TEST_F(BoundGroup, TellsItsSender) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    SendToGroup("to all");
    const auto received = ReceiveFrom(receiver_);
    EXPECT_EQ(received.result, 6);
    EXPECT_EQ(PortOf(received.sender), LocalPort(sender_));
}

TEST_F(BoundGroup, LeavesTheSocketItsName) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    const Winsock::AddressIpv4 name = LocalAddress(receiver_);
    EXPECT_EQ(PortOf(name), port_);
    EXPECT_EQ(name.address[0], 127);
    EXPECT_EQ(name.address[3], 1);
}

TEST_F(BoundGroup, MayBeJoinedBeforeTheSocketIsBound) {
    const OwnedSocket socket = NewDatagram();
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReceiveTimeout, 20'000)));
    ASSERT_TRUE(Succeeds(SetMembership(socket, Join, Group)));
    ASSERT_TRUE(Succeeds(SetMembership(socket, Join, OtherGroup)));
    ASSERT_TRUE(Succeeds(SetMembership(socket, Leave, OtherGroup)));
    ASSERT_TRUE(Succeeds(Bind(socket, Loopback(0))));
    port_ = LocalPort(socket);
    SendToGroup("to others", OtherGroup);
    SendToGroup("to all");
    EXPECT_EQ(Receive(socket), "to all");
    EXPECT_TRUE(FailsWith(10049, SetMembership(socket, Join, Group)));
    EXPECT_TRUE(Succeeds(SetMembership(socket, Leave, Group)));
    EXPECT_TRUE(FailsWith(10022, SetMembership(socket, Leave, Group)));
}

TEST_F(BoundGroup, IsOneOfMany) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, OtherGroup)));
    SendToGroup("to others", OtherGroup);
    EXPECT_EQ(Receive(receiver_), "to others");
    SendToGroup("to all");
    EXPECT_EQ(Receive(receiver_), "to all");
}

TEST_F(BoundGroup, IsJoinedAndLeftAsByAnyOther) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    EXPECT_TRUE(FailsWith(10049, SetMembership(receiver_, Join, Group)));
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Leave, Group)));
    EXPECT_TRUE(FailsWith(10022, SetMembership(receiver_, Leave, Group)));
    EXPECT_TRUE(FailsWith(10022, SetMembership(receiver_, Leave, OtherGroup)));
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    SendToGroup("again");
    EXPECT_EQ(Receive(receiver_), "again");
}

TEST_F(BoundGroup, OfAConnectedSocketIsHeardFromThePeerOnly) {
    const OwnedSocket stranger = NewBoundDatagram();
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    ASSERT_TRUE(Succeeds(Connect(receiver_, LocalAddress(sender_))));
    SendToGroup(stranger, "from a stranger");
    SendToGroup("from the peer");
    EXPECT_EQ(Receive(receiver_), "from the peer");
    ASSERT_TRUE(Succeeds(Connect(receiver_, Ipv4(0, 0, 0, 0, 0))));
    SendToGroup(stranger, "from anybody");
    EXPECT_EQ(Receive(receiver_), "from anybody");
}

TEST_F(BoundGroup, JoinedByAConnectedSocketIsHeardFromThePeerOnly) {
    const OwnedSocket stranger = NewBoundDatagram();
    ASSERT_TRUE(Succeeds(Connect(receiver_, LocalAddress(sender_))));
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    SendToGroup(stranger, "from a stranger");
    SendToGroup("from the peer");
    EXPECT_EQ(Receive(receiver_), "from the peer");
}

TEST_F(BoundGroup, StaysWithASocketThatIsConnectedAfterwards) {
    const OwnedSocket socket = NewDatagram();
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReceiveTimeout, 20'000)));
    ASSERT_TRUE(Succeeds(Bind(socket, Ipv4(0, 0, 0, 0, 0))));
    port_ = LocalPort(socket);
    ASSERT_TRUE(Succeeds(SetMembership(socket, Join, Group)));
    ASSERT_TRUE(Succeeds(Connect(socket, LocalAddress(sender_))));
    SendToGroup("from the peer");
    EXPECT_EQ(Receive(socket), "from the peer");
}

TEST_F(BoundGroup, LeavesThePortOfOtherAddressesToOthers) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    const OwnedSocket neighbour = NewDatagram();
    ASSERT_TRUE(Succeeds(SetOption(neighbour, Winsock::OptionReceiveTimeout, 20'000)));
    ASSERT_TRUE(Succeeds(Bind(neighbour, Ipv4(127, 0, 0, 2, port_))));
    ASSERT_TRUE(Succeeds(SetMembership(neighbour, Join, Group)));
    SendToGroup("to all");
    SendToAddress("to one");
    EXPECT_EQ(SendTo(sender_, "to its neighbour", Ipv4(127, 0, 0, 2, port_)), 16);
    EXPECT_EQ(Receive(receiver_), "to all");
    EXPECT_EQ(Receive(receiver_), "to one");
    EXPECT_EQ(Receive(neighbour), "to all");
    EXPECT_EQ(Receive(neighbour), "to its neighbour");
}

TEST_F(BoundGroup, LeavesThePortTakenAndThenFreeForAllAddresses) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    EXPECT_TRUE(FailsWith(10048, Bind(NewDatagram(), Loopback(port_))));
    receiver_.Close();
    EXPECT_TRUE(Succeeds(Bind(NewDatagram(), Ipv4(0, 0, 0, 0, port_))));
}

TEST_F(BoundGroup, ReachesAllWhoShareThePort) {
    const OwnedSocket first = NewDatagram();
    const OwnedSocket second = NewDatagram();
    port_ = 0;
    for (const OwnedSocket* socket : {&first, &second}) {
        ASSERT_TRUE(Succeeds(SetOption(*socket, Winsock::OptionReceiveTimeout, 20'000)));
        ASSERT_TRUE(Succeeds(SetOption(*socket, Winsock::OptionReuseAddress, 1)));
        ASSERT_TRUE(Succeeds(Bind(*socket, Loopback(port_))));
        port_ = LocalPort(*socket);
        ASSERT_TRUE(Succeeds(SetMembership(*socket, Join, Group)));
    }
    SendToGroup("to all");
    EXPECT_EQ(Receive(first), "to all");
    EXPECT_EQ(Receive(second), "to all");
}

// The system's own limit is 20 groups for one of its sockets.
TEST_F(BoundGroup, MayBeOneOfAHundred) {
    constexpr int Count = 100;
    Winsock::MembershipIpv4 group = Group;
    for (int number = 0; number < Count; ++number) {
        group.group[3] = static_cast<unsigned char>(number);
        ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, group)));
    }
    for (int number = 0; number < Count; ++number) {
        group.group[3] = static_cast<unsigned char>(number);
        SendToGroup("to all", group);
        EXPECT_EQ(Receive(receiver_), "to all");
    }
}

TEST_F(BoundGroup, FailsToBeJoinedWithoutADescriptorAndIsJoinedLater) {
    {
        const DescriptorLimit limit(DescriptorLimit::Exhausting());
        ASSERT_TRUE(limit.IsSet());
        EXPECT_TRUE(FailsWith(10024, SetMembership(receiver_, Join, Group)));
    }
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    SendToGroup("to all");
    EXPECT_EQ(Receive(receiver_), "to all");
}

int JoinWithoutMemory(const OwnedSocket& socket, unsigned int successes) {
    const Support::FailingAllocations failing(successes);
    return SetMembership(socket, Join, Group);
}

int ConnectWithoutMemory(const OwnedSocket& socket, const Winsock::AddressIpv4& peer,
                         unsigned int successes) {
    const Support::FailingAllocations failing(successes);
    return Connect(socket, peer);
}

TEST_F(BoundGroup, FailsToBeJoinedBeforehandWithoutMemoryAndIsJoinedLater) {
    const OwnedSocket socket = NewDatagram();
    unsigned int allocations = 0;
    while (JoinWithoutMemory(socket, allocations) != 0) {
        ASSERT_EQ(Winsock::WSAGetLastError(), 10055);
        EXPECT_TRUE(FailsWith(10022, SetMembership(socket, Leave, Group)));
        ASSERT_LT(++allocations, 10U);
    }
    EXPECT_GT(allocations, 0U);
}

// Others may have its port at other addresses.
TEST_F(BoundGroup, IsHeardFromThePeersHostOnly) {
    const OwnedSocket stranger = NewDatagram();
    ASSERT_TRUE(Succeeds(Bind(stranger, Ipv4(127, 0, 0, 2, LocalPort(sender_)))));
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    ASSERT_TRUE(Succeeds(Connect(receiver_, LocalAddress(sender_))));
    SendToGroup(stranger, "strange");
    SendToGroup("from the peer");
    EXPECT_EQ(Receive(receiver_), "from the peer");
    EXPECT_EQ(BytesAvailable(receiver_), 0U);
}

// Whether it is heard already can be unknown; then joining tells.
TEST_F(BoundGroup, IsJoinedThoughTheSystemDoesNotTellWhetherItIs) {
    const OwnedSocket socket = NewDatagram();
    ASSERT_TRUE(Succeeds(Bind(socket, Ipv4(0, 0, 0, 0, 0))));
    ASSERT_TRUE(Succeeds(SetMembership(socket, Join, OtherGroup)));
    ASSERT_TRUE(Succeeds(Connect(socket, LocalAddress(sender_))));
    ASSERT_TRUE(Succeeds(Connect(socket, Ipv4(0, 0, 0, 0, 0))));
    for (const int error : {ENOMEM, ENOBUFS}) {
        const SystemCalls::FailingCall unknown(SystemCalls::SystemCall::Setsockopt, error,
                                               {.count = 1, .option = IP_ADD_MEMBERSHIP});
        EXPECT_TRUE(Succeeds(SetMembership(socket, Join, Group)));
        EXPECT_TRUE(Succeeds(SetMembership(socket, Leave, Group)));
    }
}

int BindWithoutMemory(const OwnedSocket& socket, unsigned int successes) {
    const Support::FailingAllocations failing(successes);
    return Bind(socket, Loopback(0));
}

TEST_F(BoundGroup, FailsToBeKeptByABindWithoutMemoryAndIsKeptLater) {
    receiver_ = NewDatagram();
    ASSERT_TRUE(Succeeds(SetOption(receiver_, Winsock::OptionReceiveTimeout, 20'000)));
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    unsigned int allocations = 0;
    while (BindWithoutMemory(receiver_, allocations) != 0) {
        ASSERT_EQ(Winsock::WSAGetLastError(), 10055);
        ASSERT_LT(++allocations, 10U);
    }
    EXPECT_GT(allocations, 0U);
    port_ = LocalPort(receiver_);
    SendToGroup("to all");
    EXPECT_EQ(Receive(receiver_), "to all");
}

// Only IPv6 knows a group's interface by its number.
TEST_F(BoundGroup, IsJoinedWithoutAQuestionForItsInterface) {
    const SystemCalls::CountedCall lists(SystemCalls::SystemCall::IfNameindex);
    const SystemCalls::CountedCall questions(SystemCalls::SystemCall::Getsourcefilter);
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    EXPECT_EQ(lists.Seen() + questions.Seen(), 0U);
}

TEST_F(BoundGroup, FailsToFollowAPeerWithoutMemoryAndFollowsLater) {
    const OwnedSocket socket = NewDatagram();
    const Winsock::AddressIpv4 peer = LocalAddress(sender_);
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReceiveTimeout, 20'000)));
    ASSERT_TRUE(Succeeds(Bind(socket, Ipv4(0, 0, 0, 0, 0))));
    ASSERT_TRUE(Succeeds(SetMembership(socket, Join, Group)));
    unsigned int allocations = 0;
    while (ConnectWithoutMemory(socket, peer, allocations) != 0) {
        ASSERT_EQ(Winsock::WSAGetLastError(), 10055);
        ASSERT_LT(++allocations, 10U);
    }
    EXPECT_GT(allocations, 0U);
    port_ = LocalPort(socket);
    SendToGroup("to all");
    EXPECT_EQ(Receive(socket), "to all");
}

TEST_F(BoundGroup, FailsToBeJoinedWithoutMemoryAndIsJoinedLater) {
    unsigned int allocations = 0;
    while (JoinWithoutMemory(receiver_, allocations) != 0) {
        ASSERT_EQ(Winsock::WSAGetLastError(), 10055);
        ASSERT_LT(++allocations, 10U);
    }
    EXPECT_GT(allocations, 0U);
    SendToGroup("to all");
    EXPECT_EQ(Receive(receiver_), "to all");
}

}  // namespace
}  // namespace Conformance

// Groups and everybody, on the loopback interface: who receives what is sent to them.
#include <net/if.h>
#include <net/route.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <fstream>
#include <string>

#include "conformance/DatagramScene.h"
#include "conformance/Provocation.h"
#include "conformance/Scene.h"
#include "conformance/SelectScene.h"

namespace Conformance {
namespace {

constexpr Winsock::MembershipIpv4 Group = {{239, 1, 2, 3}, {127, 0, 0, 1}};

// What arrives first, of what was sent so far and one datagram more.
std::string ReceiveOne(const OwnedSocket& receiver, const OwnedSocket& sender) {
    EXPECT_EQ(SendTo(sender, "nothing", Loopback(LocalPort(receiver))), 7);
    return Receive(receiver);
}

class Groups : public Started {
protected:
    void SetUp() override {
        Started::SetUp();
        port_ = 0;
        member_ = NewReceiver();
        stranger_ = NewReceiver();
        sender_ = NewBoundDatagram();
    }
    void TearDown() override {
        member_.Close();
        stranger_.Close();
        sender_.Close();
        Started::TearDown();
    }

    // All on one port of every interface.
    OwnedSocket NewReceiver() {
        OwnedSocket socket = NewDatagram();
        EXPECT_EQ(SetOption(socket, Winsock::OptionReuseAddress, 1), 0);
        EXPECT_EQ(Bind(socket, Ipv4(0, 0, 0, 0, port_)), 0);
        port_ = LocalPort(socket);
        SetNonBlocking(socket);
        return socket;
    }
    void SendToGroup() {
        ASSERT_TRUE(Succeeds(SendTo(sender_, "to all", Ipv4(239, 1, 2, 3, port_)), 6));
    }

    unsigned int port_ = 0;
    OwnedSocket member_;
    OwnedSocket stranger_;
    OwnedSocket sender_;
};

// The descriptor may have been joined to it by somebody else in the process.
TEST_F(Groups, AreLeftByWhomsoeverTheyWereJoined) {
    ip_mreqn request = {};
    request.imr_multiaddr.s_addr = htonl(0xEF010203);
    request.imr_address.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(::setsockopt(static_cast<int>(stranger_.Get()), IPPROTO_IP, IP_ADD_MEMBERSHIP,
                           &request, sizeof request),
              0);
    EXPECT_TRUE(Succeeds(SetMembership(stranger_, Leave, Group)));
    SendToGroup();
    EXPECT_EQ(ReceiveOne(stranger_, sender_), "nothing");
    EXPECT_NE(SetMembership(stranger_, Leave, Group), 0);
}

TEST_F(Groups, ReachTheirMembersAndNobodyElse) {
    ASSERT_TRUE(Succeeds(SetMembership(member_, Join, Group)));
    SendToGroup();
    ASSERT_TRUE(IsReadable(member_));
    EXPECT_EQ(Receive(member_), "to all");
    EXPECT_TRUE(FailsWith(10035, TryReceive(stranger_)));
}

TEST_F(Groups, ReachEachMemberOnce) {
    ASSERT_TRUE(Succeeds(SetMembership(member_, Join, Group)));
    ASSERT_TRUE(Succeeds(SetMembership(stranger_, Join, Group)));
    SendToGroup();
    for (const OwnedSocket* receiver : {&member_, &stranger_}) {
        ASSERT_TRUE(IsReadable(*receiver));
        EXPECT_EQ(Receive(*receiver), "to all");
        EXPECT_TRUE(FailsWith(10035, TryReceive(*receiver)));
    }
}

TEST_F(Groups, DoNotReachThoseWhoHaveLeft) {
    ASSERT_TRUE(Succeeds(SetMembership(member_, Join, Group)));
    ASSERT_TRUE(Succeeds(SetMembership(stranger_, Join, Group)));
    ASSERT_TRUE(Succeeds(SetMembership(member_, Leave, Group)));
    SendToGroup();
    ASSERT_TRUE(IsReadable(stranger_));
    EXPECT_TRUE(FailsWith(10035, TryReceive(member_)));
}

TEST_F(Groups, DoNotReachTheMembersOfOthers) {
    constexpr Winsock::MembershipIpv4 other = {{239, 1, 2, 4}, {127, 0, 0, 1}};
    ASSERT_TRUE(Succeeds(SetMembership(member_, Join, Group)));
    ASSERT_TRUE(Succeeds(SetMembership(stranger_, Join, other)));
    SendToGroup();
    ASSERT_TRUE(IsReadable(member_));
    EXPECT_TRUE(FailsWith(10035, TryReceive(stranger_)));
}

TEST_F(Groups, AreLeftWhenTheSocketIsClosed) {
    ASSERT_TRUE(Succeeds(SetMembership(member_, Join, Group)));
    stranger_.Close();
    member_.Close();
    member_ = NewReceiver();
    SendToGroup();
    EXPECT_EQ(ReceiveOne(member_, sender_), "nothing");
}

bool RouteAllOverLoopback() {
    rtentry route = {};
    char device[] = "lo";
    route.rt_dev = device;
    route.rt_flags = RTF_UP;
    for (sockaddr* address : {&route.rt_dst, &route.rt_genmask})
        address->sa_family = AF_INET;
    const OwnedSocket any = NewDatagram();
    return ::ioctl(static_cast<int>(any.Get()), SIOCADDRT, &route) == 0;
}

void ExpectTheSystemsChoice() {
    constexpr Winsock::MembershipIpv4 anywhere = {{239, 1, 2, 3}, {0, 0, 0, 0}};
    const OwnedSocket socket = NewDatagram();
    EXPECT_TRUE(FailsWith(10049, SetMembership(socket, Join, anywhere)));
    EXPECT_TRUE(FailsWith(10022, SetMembership(socket, Leave, anywhere)));
    ASSERT_TRUE(RouteAllOverLoopback());
    EXPECT_TRUE(FailsWith(10022, SetMembership(socket, Leave, anywhere)));
    EXPECT_TRUE(Succeeds(SetMembership(socket, Join, anywhere)));
    EXPECT_TRUE(FailsWith(10049, SetMembership(socket, Join, anywhere)));
    EXPECT_TRUE(Succeeds(SetMembership(socket, Leave, anywhere)));
}

using GroupInterface = Started;

TEST_F(GroupInterface, OfZeroesIsTheOneThatTheSystemChooses) {
    const SceneResult result = RunWithNames("", "host", [] {
        ExpectTheSystemsChoice();
        return !testing::Test::HasFailure();
    });
    if (result == SceneResult::Impossible) GTEST_SKIP() << "needs a network of its own";
    EXPECT_EQ(result, SceneResult::Passed);
}

using GroupOfAStream = Started;

TEST_F(GroupOfAStream, IsNoneWhateverTheRequestIs) {
    constexpr Winsock::MembershipIpv4 group = {{239, 1, 2, 3}, {127, 0, 0, 1}};
    const OwnedSocket stream = NewStream();
    for (const int option : {Join, Leave}) {
        for (const int length : {1, 8})
            EXPECT_TRUE(FailsWith(10022, SetMembership(stream, option, group, length)));
    }
}

// The system sends nothing to IPv6 groups over the loopback interface, so this asks it who is in.
bool LoopbackIsInIpv6Group() {
    std::ifstream memberships("/proc/net/igmp6");
    std::string line;
    while (std::getline(memberships, line)) {
        const bool loopback = line.find(" lo ") != std::string::npos;
        if (loopback && line.find("ff020000000000000000000000004711") != std::string::npos) {
            return true;
        }
    }
    return false;
}

using GroupsIpv6 = Started;

TEST_F(GroupsIpv6, AreJoinedAndLeft) {
    OwnedSocket socket = NewDatagram(23);
    const Winsock::MembershipIpv6 group = {
        {0xFF, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x47, 0x11}, ::if_nametoindex("lo")};
    EXPECT_FALSE(LoopbackIsInIpv6Group());
    ASSERT_TRUE(Succeeds(SetMembership(socket, Join, group)));
    EXPECT_TRUE(LoopbackIsInIpv6Group());
    ASSERT_TRUE(Succeeds(SetMembership(socket, Leave, group)));
    EXPECT_FALSE(LoopbackIsInIpv6Group());
    ASSERT_TRUE(Succeeds(SetMembership(socket, Join, group)));
    socket.Close();
    EXPECT_FALSE(LoopbackIsInIpv6Group());
}

using GroupOfEverybody = Started;

TEST_F(GroupOfEverybody, IsReachedWithTheOptionOnly) {
    const OwnedSocket receiver = NewDatagram();
    ASSERT_TRUE(Succeeds(Bind(receiver, Ipv4(0, 0, 0, 0, 0))));
    const Winsock::AddressIpv4 everybody = Ipv4(127, 255, 255, 255, LocalPort(receiver));
    const OwnedSocket sender = NewDatagram();
    EXPECT_TRUE(FailsWith(10013, SendTo(sender, "x", everybody)));
    ASSERT_TRUE(Succeeds(SetOption(sender, Winsock::OptionBroadcast, 1)));
    EXPECT_TRUE(Succeeds(SendTo(sender, "to all", everybody), 6));
    EXPECT_EQ(Receive(receiver), "to all");
    ASSERT_TRUE(Succeeds(SetOption(sender, Winsock::OptionBroadcast, 0)));
    EXPECT_TRUE(FailsWith(10013, SendTo(sender, "x", everybody)));
}

}  // namespace
}  // namespace Conformance

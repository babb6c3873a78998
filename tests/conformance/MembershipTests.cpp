// Joining and leaving groups, all of it on the loopback interface.
#include <vector>

#include "DatagramScene.h"
#include "Scene.h"

namespace Conformance {
namespace {

constexpr int Options[] = {Join, Leave};

constexpr Winsock::MembershipIpv4 Group = {{239, 1, 2, 3}, {127, 0, 0, 1}};

// All nodes, on the system's choice of interface.
constexpr Winsock::MembershipIpv6 GroupIpv6 = {{0xFF, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
                                               0};

using Membership = Started;

TEST_F(Membership, BeginsAndEnds) {
    const OwnedSocket socket = NewDatagram();
    EXPECT_TRUE(Succeeds(SetMembership(socket, Join, Group)));
    EXPECT_TRUE(Succeeds(SetMembership(socket, Leave, Group)));
    EXPECT_TRUE(Succeeds(SetMembership(socket, Join, Group)));
}

TEST_F(Membership, BeginsOnABoundSocketToo) {
    const OwnedSocket socket = NewDatagram();
    EXPECT_TRUE(Succeeds(Bind(socket, Ipv4(0, 0, 0, 0, 0))));
    EXPECT_TRUE(Succeeds(SetMembership(socket, Join, Group)));
}

TEST_F(Membership, OfIpv6BeginsAndEndsOnTheSystemsChoiceOfInterface) {
    const OwnedSocket socket = NewDatagram(23);
    EXPECT_TRUE(Succeeds(SetMembership(socket, Join, GroupIpv6)));
    EXPECT_TRUE(Succeeds(SetMembership(socket, Leave, GroupIpv6)));
    EXPECT_TRUE(Succeeds(SetMembership(socket, Join, GroupIpv6)));
}

TEST_F(Membership, CannotBeginTwice) {
    const OwnedSocket socket = NewDatagram();
    const OwnedSocket socketIpv6 = NewDatagram(23);
    ASSERT_TRUE(Succeeds(SetMembership(socket, Join, Group)));
    ASSERT_TRUE(Succeeds(SetMembership(socketIpv6, Join, GroupIpv6)));
    EXPECT_TRUE(FailsWith(10049, SetMembership(socket, Join, Group), "joining a group twice"));
    EXPECT_TRUE(
        FailsWith(10049, SetMembership(socketIpv6, Join, GroupIpv6), "joining a group twice"));
    EXPECT_TRUE(Succeeds(SetMembership(NewDatagram(), Join, Group)));
}

TEST_F(Membership, CannotEndBeforeItHasBegunNorTwice) {
    const OwnedSocket socket = NewDatagram();
    const OwnedSocket socketIpv6 = NewDatagram(23);
    EXPECT_TRUE(FailsWith(10022, SetMembership(socket, Leave, Group)));
    EXPECT_TRUE(FailsWith(10022, SetMembership(socketIpv6, Leave, GroupIpv6)));
    ASSERT_TRUE(Succeeds(SetMembership(socket, Join, Group)));
    ASSERT_TRUE(Succeeds(SetMembership(socketIpv6, Join, GroupIpv6)));
    ASSERT_TRUE(Succeeds(SetMembership(socket, Leave, Group)));
    ASSERT_TRUE(Succeeds(SetMembership(socketIpv6, Leave, GroupIpv6)));
    EXPECT_TRUE(FailsWith(10022, SetMembership(socket, Leave, Group)));
    EXPECT_TRUE(FailsWith(10022, SetMembership(socketIpv6, Leave, GroupIpv6)));
}

TEST_F(Membership, IsOfGroupsOnly) {
    const OwnedSocket socket = NewDatagram();
    constexpr Winsock::MembershipIpv4 nones[] = {{{255, 255, 255, 255}, {127, 0, 0, 1}},
                                                 {{127, 0, 0, 1}, {127, 0, 0, 1}},
                                                 {{223, 255, 255, 255}, {127, 0, 0, 1}},
                                                 {{240, 0, 0, 0}, {127, 0, 0, 1}},
                                                 {{0, 0, 0, 0}, {127, 0, 0, 1}}};
    for (const Winsock::MembershipIpv4& none : nones)
        EXPECT_TRUE(FailsWith(10022, SetMembership(socket, Join, none)));
    Winsock::MembershipIpv6 none = {{}, 0};
    none.group[15] = 1;
    EXPECT_TRUE(FailsWith(10022, SetMembership(NewDatagram(23), Join, none)));
}

TEST_F(Membership, NeedsAnInterface) {
    constexpr Winsock::MembershipIpv4 elsewhere = {{239, 1, 2, 3}, {198, 51, 100, 7}};
    EXPECT_TRUE(FailsWith(10049, SetMembership(NewDatagram(), Join, elsewhere),
                          "joining a group on an interface elsewhere"));
}

TEST_F(Membership, NeedsAWholeRequestAndTakesMore) {
    const OwnedSocket socket = NewDatagram();
    const OwnedSocket socketIpv6 = NewDatagram(23);
    for (const int option : Options) {
        for (const int length : {7, 4, 0, -1}) {
            EXPECT_TRUE(FailsWith(10014, SetMembership(socket, option, Group, length),
                                  "a part of a membership request"))
                << length;
        }
        for (const int length : {19, 16, 8, 0, -1}) {
            EXPECT_TRUE(FailsWith(10014, SetMembership(socketIpv6, option, GroupIpv6, length),
                                  "a part of a membership request"))
                << length;
        }
    }
    std::vector<Winsock::MembershipIpv4> longer(4);
    longer.front() = Group;
    EXPECT_TRUE(Succeeds(SetMembership(socket, Join, longer.front(), 32)));
}

TEST_F(Membership, RefusesNull) {
    for (const int option : Options) {
        EXPECT_TRUE(
            FailsWith(10014, Winsock::setsockopt(NewDatagram().Get(), 0, option, nullptr, 8)));
        EXPECT_TRUE(
            FailsWith(10014, Winsock::setsockopt(NewDatagram(23).Get(), 41, option, nullptr, 20)));
    }
}

TEST_F(Membership, IsOfTheSocketsOwnFamily) {
    for (const int option : Options) {
        EXPECT_TRUE(FailsWith(10022, SetMembership(NewDatagram(), option, GroupIpv6),
                              "a membership request of another family"));
        EXPECT_TRUE(FailsWith(10022, SetMembership(NewDatagram(23), option, Group),
                              "a membership request of another family"));
    }
}

TEST_F(Membership, IsNotForStreams) {
    for (const int option : Options) {
        EXPECT_TRUE(FailsWith(10022, SetMembership(NewStream(), option, Group)));
        EXPECT_TRUE(FailsWith(10022, SetMembership(NewStream(23), option, GroupIpv6)));
    }
}

TEST_F(Membership, EndsWithTheSocket) {
    OwnedSocket first = NewDatagram();
    ASSERT_TRUE(Succeeds(SetMembership(first, Join, Group)));
    first.Close();
    const OwnedSocket second = NewDatagram();
    EXPECT_TRUE(FailsWith(10022, SetMembership(second, Leave, Group)));
    EXPECT_TRUE(Succeeds(SetMembership(second, Join, Group)));
}

}  // namespace
}  // namespace Conformance

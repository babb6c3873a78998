// One to many, in a network that ends on this machine.
#include <loopback/ExtendedTest.h>
#include <support/Wine.h>

namespace Loopback {
namespace {

constexpr const char* Group = "239.1.2.3";
constexpr int Join = 0;
constexpr int Leave = 1;

Failure MembershipFailed(const std::string& option, int number, std::u16string_view numberText) {
    return XtFailure("SetSocketForMulticast", "cannot set option for multicast",
                     "::setsockopt(" + option + ")", "", number, numberText);
}

class ExtendedMulticast : public LoopbackTest {
protected:
    void SetUp() override {
        if (!network_.IsUp()) {
            GTEST_SKIP() << "the system gives a test no network that ends on this machine";
        }
        const std::string lacking = Lacking(Ipv4);
        if (!lacking.empty()) GTEST_SKIP() << lacking;
        EnableOnly({Error});
    }

    static XtPtr Receiver() {
        XtPtr socket = DatagramXt(Ipv4);
        socket->Bind(VelNet::SPECIAL_ANY, "0");
        return socket;
    }

private:
    const Machine::OwnNetwork network_;
};

TEST_F(ExtendedMulticast, ADatagramToTheGroupArrivesAtAMember) {
    const XtPtr member = Receiver();
    member->SetSocketForMulticast(Group, Join);
    const XtPtr sender = DatagramXt(Ipv4);
    EXPECT_EQ(SendTo(*sender, "to all", Group, PortOf(*member)), 6);
    const Received received = ReceiveFrom(*member);
    EXPECT_EQ(received.bytes, "to all");
    EXPECT_EQ(received.port, PortOf(*sender));
    EXPECT_EQ(Sink().Take(), Records{});
}

TEST_F(ExtendedMulticast, WhoHasLeftGetsNothingMore) {
    const XtPtr member = Receiver();
    const std::string port = PortOf(*member);
    const XtPtr sender = DatagramXt(Ipv4);
    member->SetSocketForMulticast(Group, Join);
    SendTo(*sender, "before", Group, port);
    EXPECT_EQ(ReceiveFrom(*member).bytes, "before");
    member->SetSocketForMulticast(Group, Leave);
    SendTo(*sender, "after", Group, port);
    SendTo(*sender, "to one", "127.0.0.1", port);
    EXPECT_EQ(ReceiveFrom(*member).bytes, "to one");

    member->SetSocketForMulticast(Group, Join);
    SendTo(*sender, "again", Group, port);
    EXPECT_EQ(ReceiveFrom(*member).bytes, "again");
}

TEST_F(ExtendedMulticast, WhoNeverJoinedGetsNothing) {
    const XtPtr member = Receiver();
    member->SetSocketForMulticast(Group, Join);
    const XtPtr stranger = Receiver();
    const std::string port = PortOf(*stranger);
    const XtPtr sender = DatagramXt(Ipv4);
    EXPECT_EQ(SendTo(*sender, "to all", Group, port), 6);
    SendTo(*sender, "to one", "127.0.0.1", port);
    std::string bytes = ReceiveFrom(*stranger).bytes;
    // Wine gives every socket what any socket of the machine has joined.
    if (Support::RunsOnWine() && bytes == "to all") bytes = ReceiveFrom(*stranger).bytes;
    EXPECT_EQ(bytes, "to one");
}

TEST_F(ExtendedMulticast, AGroupCannotBeJoinedTwice) {
    const XtPtr socket = DatagramXt(Ipv4);
    socket->SetSocketForMulticast(Group, Join);
    const Failure failure = FailureOf([&] { socket->SetSocketForMulticast(Group, Join); });
    EXPECT_TRUE(failure == MembershipFailed("IP_ADD_MEMBERSHIP", 10049,
                                            u"Cannot assign requested address") ||
                (Support::RunsOnWine() && failure.code == 10048))
        << testing::PrintToString(failure);
}

TEST_F(ExtendedMulticast, AStreamJoinsNothing) {
    const XtPtr socket = StreamXt(Ipv4);
    EXPECT_EQ(FailureOf([&] { socket->SetSocketForMulticast(Group, Join); }),
              MembershipFailed("IP_ADD_MEMBERSHIP", 10022, u"Invalid argument"));
}

TEST_F(ExtendedMulticast, TheGroupOfAllNodesIsJoinedAndLeft) {
    if (const std::string lacking = Lacking(Ipv6); !lacking.empty()) GTEST_SKIP() << lacking;
    const XtPtr socket = DatagramXt(Ipv6);
    const Failure failure =
        FailureOf([&] { socket->SetSocketForMulticast(VelNet::SPECIAL_BROADCAST, Join); });
    if (failure.code == 10049) GTEST_SKIP() << "no interface here has groups of IPv6";
    EXPECT_EQ(failure.code, 0) << testing::PrintToString(failure);
    socket->SetSocketForMulticast("ff02::1", Leave);
    EXPECT_EQ(FailureOf([&] { socket->SetSocketForMulticast("ff02::1", Leave); }),
              MembershipFailed("IP_DROP_MEMBERSHIP", 10022, u"Invalid argument"));
}

TEST_F(ExtendedMulticast, AGroupThatWasLeftCannotBeLeftAgain) {
    const XtPtr socket = DatagramXt(Ipv4);
    socket->SetSocketForMulticast(Group, Join);
    socket->SetSocketForMulticast(Group, Leave);
    EXPECT_EQ(FailureOf([&] { socket->SetSocketForMulticast(Group, Leave); }),
              MembershipFailed("IP_DROP_MEMBERSHIP", 10022, u"Invalid argument"));
}

TEST_F(ExtendedMulticast, WithTheOptionBroadcastingIsNotRefused) {
    const XtPtr socket = DatagramXt(Ipv4);
    socket->SetSocketForBroadcast();
    EXPECT_NE(FailureOf([&] { socket->SendTo("x", 1, VelNet::SPECIAL_BROADCAST, "9"); }).code,
              10013);
}

// What the system refuses goes nowhere, so that any network will do.
class ExtendedMulticastRefused : public LoopbackTest {
protected:
    void SetUp() override {
        const std::string lacking = Lacking(Ipv4);
        if (!lacking.empty()) GTEST_SKIP() << lacking;
        EnableOnly({Error});
    }
};

TEST_F(ExtendedMulticastRefused, AGroupThatWasNeverJoinedCannotBeLeft) {
    const XtPtr socket = DatagramXt(Ipv4);
    const Failure failure = MembershipFailed("IP_DROP_MEMBERSHIP", 10022, u"Invalid argument");
    EXPECT_EQ(FailureOf([&] { socket->SetSocketForMulticast(Group, Leave); }), failure);
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
}

TEST_F(ExtendedMulticastRefused, AnyOtherModeIsRefusedAsALeave) {
    const XtPtr socket = DatagramXt(Ipv4);
    const Failure failure = MembershipFailed("IP_DROP_MEMBERSHIP", 10042, u"Bad protocol option");
    for (const int mode : {7, 2, -1}) {
        EXPECT_EQ(FailureOf([&] { socket->SetSocketForMulticast(Group, mode); }), failure) << mode;
        EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    }
}

TEST_F(ExtendedMulticastRefused, WhatIsNoGroupIsRefused) {
    const XtPtr socket = DatagramXt(Ipv4);
    const Failure failure = MembershipFailed("IP_ADD_MEMBERSHIP", 10022, u"Invalid argument");
    EXPECT_EQ(FailureOf([&] { socket->SetSocketForMulticast(VelNet::SPECIAL_BROADCAST, Join); }),
              failure);
    EXPECT_EQ(FailureOf([&] { socket->SetSocketForMulticast("127.0.0.1", Join); }), failure);
    EXPECT_EQ(FailureOf([&] { socket->SetSocketForMulticast("ff02::1", Join); }), failure);
}

TEST_F(ExtendedMulticastRefused, AGroupThatDoesNotResolveIsAFailureWithoutTexts) {
    const XtPtr socket = DatagramXt(Ipv4);
    const Failure failure =
        FailureOf([&] { socket->SetSocketForMulticast(UnresolvableHost().c_str(), Join); });
    EXPECT_TRUE(IsResolversNumber(failure.code)) << failure.code;
    EXPECT_EQ(failure, XtFailure("SetSocketForMulticast", "cannot set option for multicast",
                                 "::getaddrinfo", "", failure.code, ResolversText(failure.code)));
}

TEST_F(ExtendedMulticastRefused, BroadcastingNeedsTheOption) {
    const XtPtr socket = DatagramXt(Ipv4);
    const Failure failure =
        FailureOf([&] { socket->SendTo("x", 1, VelNet::SPECIAL_BROADCAST, "9"); });
    // Wine looks for a way there first.
    EXPECT_TRUE(failure ==
                    SendToFailed("255.255.255.255 : 9", "::sendto", 10013, u"Permission denied") ||
                (Support::RunsOnWine() && failure.code == 10051))
        << testing::PrintToString(failure);
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
}

}  // namespace
}  // namespace Loopback

// Options and questions that the system refuses: nothing is remembered that is not so.
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

#include "conformance/DatagramScene.h"
#include "conformance/Scene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

using OptionFault = Started;

TEST_F(OptionFault, OfATimeoutLeavesTheOneThatWas) {
    const Pair pair = NewConnectedPair();
    ASSERT_TRUE(Succeeds(SetOption(pair.server, Winsock::OptionReceiveTimeout, 30)));
    {
        const FailingCall fails(SystemCall::Setsockopt, ENOBUFS);
        EXPECT_TRUE(FailsWith(10055, SetOption(pair.server, Winsock::OptionReceiveTimeout, 0)));
    }
    // An interrupted receive waits on by what is remembered.
    const FailingCall interrupted(SystemCall::Recv, EINTR, {.count = 1});
    EXPECT_TRUE(FailsWith(10060, TryReceive(pair.server)));
}

TEST_F(OptionFault, OfAFirstTimeoutLeavesNone) {
    const Pair pair = NewConnectedPair();
    {
        const FailingCall fails(SystemCall::Setsockopt, ENOBUFS);
        EXPECT_TRUE(FailsWith(10055, SetOption(pair.server, Winsock::OptionReceiveTimeout, 30)));
    }
    ASSERT_TRUE(Succeeds(Send(pair.client, "abc"), 3));
    const FailingCall interrupted(SystemCall::Recv, EINTR, {.count = 1});
    const CountedCall limits(SystemCall::Getsockopt, {.option = SO_RCVTIMEO});
    EXPECT_EQ(Receive(pair.server), "abc");
    EXPECT_EQ(limits.Seen(), 0U);
}

TEST_F(OptionFault, OfReuseLeavesATakenPortTaken) {
    const OwnedSocket first = NewBoundStream();
    const OwnedSocket second = NewStream();
    {
        const FailingCall fails(SystemCall::Setsockopt, ENOMEM);
        EXPECT_TRUE(FailsWith(10055, SetOption(second, Winsock::OptionReuseAddress, 1)));
    }
    EXPECT_TRUE(FailsWith(10048, Bind(second, LocalAddress(first))));
}

TEST_F(OptionFault, OfTheBlockingModeLeavesItAsItWas) {
    const OwnedSocket socket = NewBoundDatagram();
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReceiveTimeout, 10)));
    unsigned int on = 1;
    {
        const FailingCall fails(SystemCall::Ioctl, EIO);
        EXPECT_TRUE(
            FailsWith(10022, Winsock::ioctlsocket(socket.Get(), Winsock::CommandNonBlocking, &on)));
    }
    EXPECT_TRUE(FailsWith(10060, TryReceive(socket)));
    SetNonBlocking(socket);
    {
        const FailingCall fails(SystemCall::Ioctl, EIO);
        unsigned int off = 0;
        EXPECT_TRUE(FailsWith(
            10022, Winsock::ioctlsocket(socket.Get(), Winsock::CommandNonBlocking, &off)));
    }
    EXPECT_TRUE(FailsWith(10035, TryReceive(socket)));
}

TEST_F(OptionFault, OfTheWaitingBytesLeavesTheCountAlone) {
    const Pair pair = NewConnectedPair();
    const FailingCall fails(SystemCall::Ioctl, EFAULT, {.option = FIONREAD});
    unsigned int count = 99;
    EXPECT_TRUE(FailsWith(
        10014, Winsock::ioctlsocket(pair.server.Get(), Winsock::CommandBytesAvailable, &count)));
    EXPECT_EQ(count, 99U);
}

// A socket that may not send to everybody is one that the system says nothing of.
TEST_F(OptionFault, OfTheQuestionWhetherToBroadcastIsNoLeaveToDoSo) {
    const OwnedSocket socket = NewBoundDatagram();
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionBroadcast, 1)));
    const FailingCall fails(SystemCall::Getsockopt, ENOBUFS, {.option = SO_BROADCAST});
    EXPECT_TRUE(FailsWith(10013, SendTo(socket, "x", Ipv4(255, 255, 255, 255, 9))));
}

using OptionFaultOfAMembership = Started;

constexpr Winsock::MembershipIpv4 GroupIpv4 = {{239, 1, 2, 3}, {127, 0, 0, 1}};
constexpr Winsock::MembershipIpv6 GroupIpv6 = {{0xFF, 0x02, 1, 2, 3}, 0};

struct MembershipRow {
    int system;
    int ofJoining;
    int ofLeaving;
};

TEST_F(OptionFaultOfAMembership, HasWinsocksNumberForJoiningAndForLeaving) {
    constexpr MembershipRow rows[] = {
        {EADDRINUSE, 10049, 10048}, {EADDRNOTAVAIL, 10049, 10022}, {ENODEV, 10049, 10022},
        {ENXIO, 10049, 10049},      {ENOBUFS, 10055, 10055},       {ENOMEM, 10055, 10055},
        {EINVAL, 10022, 10022},     {EPERM, 10013, 10013},         {ENOPROTOOPT, 10042, 10042},
        {EPROTO, 10022, 10022},     {EDOM, 10022, 10022},
    };
    const OwnedSocket ipv4 = NewDatagram();
    const OwnedSocket ipv6 = NewDatagram(Winsock::FamilyIpv6);
    for (const MembershipRow& row : rows) {
        const FailingCall fails(SystemCall::Setsockopt, row.system);
        EXPECT_TRUE(FailsWith(row.ofJoining, SetMembership(ipv4, Join, GroupIpv4)));
        EXPECT_TRUE(FailsWith(row.ofJoining, SetMembership(ipv6, Join, GroupIpv6)));
        EXPECT_TRUE(FailsWith(row.ofLeaving, SetMembership(ipv4, Leave, GroupIpv4)));
        EXPECT_TRUE(FailsWith(row.ofLeaving, SetMembership(ipv6, Leave, GroupIpv6)));
        EXPECT_EQ(fails.Seen(), 4U) << row.system;
    }
}

}  // namespace
}  // namespace Conformance

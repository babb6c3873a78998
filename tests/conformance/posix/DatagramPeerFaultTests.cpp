// Peers of datagram sockets that the system refuses, and what the sockets are then.
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>

#include "conformance/DatagramScene.h"
#include "conformance/Provocation.h"
#include "conformance/Scene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

// A socket with a peer, and somebody else.
struct Change {
    OwnedSocket former = NewReceiver();
    OwnedSocket next = NewReceiver();
    OwnedSocket socket = NewDatagram();

    Change() {
        SetNonBlocking(socket);
        EXPECT_EQ(Connect(socket, LocalAddress(former)), 0);
    }
    int TakeNext() const { return Connect(socket, LocalAddress(next)); }

    void ExpectPeer(const OwnedSocket& peer) const {
        EXPECT_TRUE(Succeeds(Send(socket, "hello"), 5));
        EXPECT_EQ(Receive(peer), "hello");
    }
    void ExpectNobody() const {
        EXPECT_TRUE(FailsWith(10057, Send(socket, "hello")));
        EXPECT_TRUE(Succeeds(TakeNext()));
        ExpectPeer(next);
    }
};

using DatagramPeerFaultInAChange = Started;

TEST_F(DatagramPeerFaultInAChange, ThatFailsBeforeItHasBegunLeavesTheFormerOne) {
    const Change change;
    {
        const FailingCall fails(SystemCall::Getsockname, ENOBUFS, {.count = 1});
        const Winsock::AddressIpv4 next = Loopback(9);
        EXPECT_TRUE(FailsWith(10055, Connect(change.socket, next)));
    }
    change.ExpectPeer(change.former);
    {
        const FailingCall fails(SystemCall::Connect, ENOMEM, {.count = 1});
        EXPECT_TRUE(FailsWith(10055, change.TakeNext()));
    }
    change.ExpectPeer(change.former);
}

TEST_F(DatagramPeerFaultInAChange, ThatFailsInTheMiddleLeavesNone) {
    const Change change;
    const unsigned int port = LocalPort(change.socket);
    {
        const FailingCall fails(SystemCall::Connect, ENETUNREACH, {.first = 2});
        EXPECT_TRUE(FailsWith(10051, change.TakeNext()));
    }
    EXPECT_EQ(LocalPort(change.socket), port);
    change.ExpectNobody();
    EXPECT_EQ(LocalPort(change.socket), port);
}

TEST_F(DatagramPeerFaultInAChange, ThatCostsThePortLeavesTheSocketUnbound) {
    for (const SystemCall call : {SystemCall::Bind, SystemCall::Getsockname}) {
        const Change change;
        {
            const Winsock::AddressIpv4 next = LocalAddress(change.next);
            const unsigned int which = call == SystemCall::Bind ? 1 : 2;
            const FailingCall fails(call, EADDRINUSE, {.first = which});
            EXPECT_TRUE(FailsWith(10048, Connect(change.socket, next)));
        }
        EXPECT_TRUE(FailsWith(10022, TryReceive(change.socket)));
        change.ExpectNobody();
    }
}

TEST_F(DatagramPeerFaultInAChange, ToNobodyIsToldWhenItFails) {
    const Change change;
    {
        const FailingCall fails(SystemCall::Connect, ENOMEM);
        EXPECT_TRUE(FailsWith(10055, Connect(change.socket, Ipv4(0, 0, 0, 0, 0))));
    }
    change.ExpectPeer(change.former);
}

// The socket's groups must not be heard beside its peer.
TEST_F(DatagramPeerFaultInAChange, ThatTheGroupsCannotFollowLeavesNone) {
    const OwnedSocket socket = NewReceiver();
    const OwnedSocket peer = NewReceiver();
    ASSERT_TRUE(Succeeds(SetMembership(socket, Join, {{239, 1, 2, 3}, {127, 0, 0, 1}})));
    for (const bool hadPeer : {false, true}) {
        if (hadPeer) {
            ASSERT_TRUE(Succeeds(Connect(socket, Loopback(9))));
        }
        const FailingCall fails(SystemCall::Setsockopt, ENOMEM, {.option = SO_ATTACH_FILTER});
        EXPECT_TRUE(FailsWith(10055, Connect(socket, LocalAddress(peer))));
        EXPECT_GE(fails.Seen(), 1U);
        EXPECT_TRUE(FailsWith(10057, Send(socket, "x")));
        EXPECT_TRUE(Succeeds(SendTo(NewDatagram(), "to anybody", LocalAddress(socket)), 10));
        EXPECT_EQ(Receive(socket), "to anybody");
    }
    ASSERT_TRUE(Succeeds(Connect(socket, LocalAddress(peer))));
    EXPECT_TRUE(Succeeds(Send(socket, "x"), 1));
    EXPECT_EQ(Receive(peer), "x");
}

using DatagramPeerFaultFirstPeer = Started;

TEST_F(DatagramPeerFaultFirstPeer, ThatFailsLeavesThePortThatTheSystemGave) {
    const OwnedSocket socket = NewDatagram();
    SetNonBlocking(socket);
    const FailingCall fails(SystemCall::Connect, ENETUNREACH);
    EXPECT_TRUE(FailsWith(10051, Connect(socket, Loopback(9))));
    EXPECT_TRUE(FailsWith(10022, TryReceive(socket)));
    EXPECT_TRUE(Succeeds(Bind(socket, Loopback(0))));
    const OwnedSocket bound = NewDatagram();
    const HookedCall gives(SystemCall::Connect, [](const Call& call) {
        sockaddr_in any = {};
        any.sin_family = AF_INET;
        EXPECT_EQ(::bind(static_cast<int>(call.Argument(0)), reinterpret_cast<sockaddr*>(&any),
                         sizeof any),
                  0);
        return call.Fail(ENETUNREACH);
    });
    EXPECT_TRUE(FailsWith(10051, Connect(bound, Loopback(9))));
    EXPECT_NE(LocalPort(bound), 0U);
}

TEST_F(DatagramPeerFaultFirstPeer, HasWinsocksNumbersForWantOfAPortAndOfAWay) {
    const OwnedSocket socket = NewDatagram();
    const FailingCall noWay(SystemCall::Connect, EINVAL);
    EXPECT_TRUE(FailsWith(10049, Connect(socket, Loopback(9))));
    const FailingCall noPort(SystemCall::Connect, EAGAIN);
    EXPECT_TRUE(FailsWith(10048, Connect(socket, Loopback(9))));
    SetNonBlocking(socket);
    EXPECT_TRUE(FailsWith(10048, Connect(socket, Loopback(9))));
}

TEST_F(DatagramPeerFaultFirstPeer, TakesOneCallOfTheSystem) {
    const OwnedSocket peer = NewReceiver();
    const Winsock::AddressIpv4 address = LocalAddress(peer);
    const OwnedSocket socket = NewDatagram();
    const CountedCall connects(SystemCall::Connect);
    const CountedCall looks(SystemCall::Recvfrom);
    const CountedCall names(SystemCall::Getpeername);
    const CountedCall ownNames(SystemCall::Getsockname);
    const CountedCall binds(SystemCall::Bind);
    EXPECT_TRUE(Succeeds(Connect(socket, address)));
    EXPECT_EQ(connects.Seen(), 1U);
    EXPECT_EQ(looks.Seen() + names.Seen() + ownNames.Seen() + binds.Seen(), 0U);
}

TEST_F(DatagramPeerFaultFirstPeer, OfASocketThatNobodyKnewMakesReceivingNoDearer) {
    const OwnedSocket peer = NewReceiver();
    const OwnedSocket socket = NewDatagram();
    ASSERT_TRUE(Succeeds(Connect(socket, LocalAddress(peer))));
    ASSERT_TRUE(Succeeds(SendTo(peer, "x", LocalAddress(socket)), 1));
    AwaitReadable(socket.Get());
    const CountedCall questions(SystemCall::Getpeername);
    EXPECT_EQ(Receive(socket), "x");
    EXPECT_EQ(questions.Seen(), 0U);
}

using DatagramPeerFaultStrangers = Started;

TEST_F(DatagramPeerFaultStrangers, AreNotLookedForAnyMoreOnceTheQueueWasEmpty) {
    const OwnedSocket socket = NewReceiver();
    const OwnedSocket peer = NewReceiver();
    const OwnedSocket stranger = NewReceiver();
    for (const OwnedSocket* sender : {&stranger, &peer, &stranger})
        ASSERT_TRUE(Succeeds(SendTo(*sender, "x", LocalAddress(socket)), 1));
    ASSERT_TRUE(Succeeds(Connect(socket, LocalAddress(peer))));
    EXPECT_EQ(Receive(socket), "x");
    ASSERT_TRUE(Succeeds(SendTo(peer, "y", LocalAddress(socket)), 1));
    const CountedCall looks(SystemCall::Recvfrom);
    const CountedCall names(SystemCall::Getpeername);
    EXPECT_EQ(Receive(socket), "y");
    EXPECT_EQ(looks.Seen() + names.Seen(), 0U);
}

// As long as the system does not tell who is next, nobody is let go.
TEST_F(DatagramPeerFaultStrangers, AreLookedForAgainWhenTheSystemCouldNotTell) {
    const OwnedSocket peer = NewReceiver();
    const OwnedSocket stranger = NewReceiver();
    for (const SystemCall call : {SystemCall::Getpeername, SystemCall::Recvfrom}) {
        for (const int error : {ENOMEM, EIO}) {
            const OwnedSocket socket = NewReceiver();
            for (const OwnedSocket* sender : {&peer, &stranger, &peer})
                ASSERT_TRUE(Succeeds(SendTo(*sender, "x", LocalAddress(socket)), 1));
            {
                const FailingCall fails(call, error);
                ASSERT_TRUE(Succeeds(Connect(socket, LocalAddress(peer))));
                EXPECT_EQ(fails.Seen(), 1U);
            }
            SetNonBlocking(socket);
            EXPECT_EQ(Receive(socket), "x");
            EXPECT_EQ(Receive(socket), "x");
            EXPECT_TRUE(FailsWith(10035, TryReceive(socket)));
        }
    }
}

TEST_F(DatagramPeerFaultStrangers, WhoseDatagramAnotherThreadHasTakenAreNotWaitedFor) {
    const OwnedSocket socket = NewReceiver();
    const OwnedSocket peer = NewReceiver();
    ASSERT_TRUE(Succeeds(SendTo(NewBoundDatagram(), "x", LocalAddress(socket)), 1));
    const HookedCall takes(SystemCall::Recv, [](const Call& call) {
        char byte = 0;
        ::recv(static_cast<int>(call.Argument(0)), &byte, 1, MSG_DONTWAIT);
        return call.Make();
    });
    EXPECT_LT(TimeOf([&] { EXPECT_TRUE(Succeeds(Connect(socket, LocalAddress(peer)))); }),
              Milliseconds(15'000));
    EXPECT_EQ(takes.Seen(), 1U);
}

using DatagramPeerFaultChosenPort = Started;

TEST_F(DatagramPeerFaultChosenPort, IsNoneWhereSharingCannotBeStopped) {
    const OwnedSocket socket = NewDatagram();
    SetNonBlocking(socket);
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReuseAddress, 1)));
    const FailingCall fails(SystemCall::Setsockopt, ENOMEM, {.option = SO_REUSEADDR});
    EXPECT_TRUE(FailsWith(10055, Bind(socket, Loopback(0))));
    EXPECT_TRUE(FailsWith(10055, SendTo(socket, "x", Loopback(9))));
    EXPECT_TRUE(FailsWith(10055, Connect(socket, Loopback(9))));
    EXPECT_TRUE(FailsWith(10022, TryReceive(socket)));
}

// Another thread may have sent first.
TEST_F(DatagramPeerFaultChosenPort, ThatTheSocketHasGotMeanwhileIsAsGood) {
    const OwnedSocket receiver = NewReceiver();
    const OwnedSocket sender = NewDatagram();
    const HookedCall binds(SystemCall::Bind, [](const Call& call) {
        EXPECT_EQ(call.Make(), 0);
        return call.Fail(EINVAL);
    });
    EXPECT_TRUE(Succeeds(SendTo(sender, "x", LocalAddress(receiver)), 1));
    EXPECT_EQ(Receive(receiver), "x");
    EXPECT_EQ(binds.Seen(), 1U);
}

TEST_F(DatagramPeerFaultChosenPort, IsRefusedForTheReasonOfTheBind) {
    const OwnedSocket socket = NewDatagram();
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReuseAddress, 1)));
    const FailingCall binds(SystemCall::Bind, EADDRINUSE);
    const FailingCall later(SystemCall::Setsockopt, ENOMEM, {.first = 2, .option = SO_REUSEADDR});
    EXPECT_TRUE(FailsWith(10048, Bind(socket, Loopback(0))));
    EXPECT_EQ(later.Seen(), 2U);
}

TEST_F(DatagramPeerFaultChosenPort, IsKeptWithoutSharingWhenThePeerIsTakenAway) {
    const OwnedSocket socket = NewDatagram();
    ASSERT_TRUE(Succeeds(Connect(socket, Loopback(9))));
    const CountedCall shares(SystemCall::Setsockopt);
    ASSERT_TRUE(Succeeds(Connect(socket, Ipv4(0, 0, 0, 0, 0))));
    EXPECT_EQ(shares.Seen(), 0U);
}

TEST_F(DatagramPeerFaultChosenPort, IsNotAskedForOnceThereIsOne) {
    const OwnedSocket socket = NewBoundDatagram();
    const CountedCall binds(SystemCall::Bind);
    EXPECT_TRUE(Succeeds(SendTo(socket, "x", Loopback(9)), 1));
    EXPECT_EQ(binds.Seen(), 0U);
}

}  // namespace
}  // namespace Conformance

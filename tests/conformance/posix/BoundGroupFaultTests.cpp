// Groups that the system refuses to a socket that is bound to an address or connected: every call
// that leads to one fails in turn.
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <string>

#include "BoundGroupScene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

// Fails one call of the system, those apart that may fail or that the socket makes anyway.
class FailingStep {
public:
    FailingStep(const OwnedSocket& socket, unsigned int which, SystemCall end)
        : socket_(static_cast<Word>(socket.Get())), left_(which), end_(end) {}

    bool HasFailed() const { return left_ == 0; }

private:
    bool IsApart(const Call& call) const {
        if (ended_ || call.Which() == SystemCall::Close) return true;
        if (call.Argument(0) != socket_) return false;
        return call.Which() == SystemCall::Bind || IsOfMembership(call);
    }
    // Asks whether the socket is a member, or leaves the group to another.
    static bool IsOfMembership(const Call& call) {
        const Word option = call.Argument(2);
        return call.Which() == SystemCall::Setsockopt &&
               (option == IP_ADD_MEMBERSHIP || option == IP_DROP_MEMBERSHIP);
    }
    Word Answer(const Call& call) {
        ended_ = ended_ || call.Which() == end_;
        if (left_ == 0 || IsApart(call) || --left_ != 0) return call.Make();
        return call.Fail(ENOMEM);
    }

    Word socket_;
    unsigned int left_;
    SystemCall end_;  // from which on all may fail
    bool ended_ = false;
    const HookedCall hook_{SystemCall::Any, [this](const Call& call) { return Answer(call); }};
};

class BoundGroupFault : public BoundGroup {
protected:
    void TakeReceiver(OwnedSocket socket) {
        receiver_ = std::move(socket);
        EXPECT_EQ(SetOption(receiver_, Winsock::OptionReceiveTimeout, 8'000), 0);
    }
    void TakeReceiverOnAllAddresses() {
        TakeReceiver(NewDatagram());
        EXPECT_EQ(Bind(receiver_, Ipv4(0, 0, 0, 0, 0)), 0);
        port_ = LocalPort(receiver_);
    }

    // Whether the call failed as it was to; false once there was nothing more to fail.
    template <typename Action>
    bool FailsAt(unsigned int step, Action action, SystemCall end = SystemCall::Any) {
        bool failed = false;
        int result = 0;
        {
            const FailingStep fails(receiver_, step, end);
            result = action();
            failed = fails.HasFailed();
        }
        EXPECT_TRUE(failed ? FailsWith(10055, result) : Succeeds(result)) << step;
        return failed;
    }

    // That it hears the group once, and nothing else.
    void ExpectGroup() {
        SendToGroup("to others", OtherGroup);
        SendToGroup("to all");
        EXPECT_EQ(Receive(receiver_), "to all");
        SendToAddress("to one");
        EXPECT_EQ(Receive(receiver_), "to one");
        EXPECT_EQ(BytesAvailable(receiver_), 0U);
    }
    void ExpectPeerOnly() {
        SendToGroup(NewBoundDatagram(), "strange");
        ExpectGroup();
    }
};

constexpr unsigned int First = 1;
constexpr unsigned int FewestSteps = 6;

TEST_F(BoundGroupFault, InJoiningLeavesNoMember) {
    unsigned int step = First;
    for (bool failed = true; failed && !HasFailure(); ++step) {
        TakeReceiver(NewBoundDatagram());
        port_ = LocalPort(receiver_);
        failed = FailsAt(step, [&] { return SetMembership(receiver_, Join, Group); });
        if (failed) {
            EXPECT_TRUE(FailsWith(10022, SetMembership(receiver_, Leave, Group))) << step;
            EXPECT_TRUE(Succeeds(SetMembership(receiver_, Join, Group))) << step;
        }
        ExpectGroup();
    }
    EXPECT_GT(step, FewestSteps);
}

TEST_F(BoundGroupFault, InJoiningWithAPeerLeavesNoMember) {
    unsigned int step = First;
    for (bool failed = true; failed && !HasFailure(); ++step) {
        TakeReceiverOnAllAddresses();
        ASSERT_TRUE(Succeeds(Connect(receiver_, LocalAddress(sender_))));
        failed = FailsAt(step, [&] { return SetMembership(receiver_, Join, Group); });
        if (failed) {
            EXPECT_TRUE(FailsWith(10022, SetMembership(receiver_, Leave, Group))) << step;
            EXPECT_TRUE(Succeeds(SetMembership(receiver_, Join, Group))) << step;
        }
        ExpectPeerOnly();
    }
    EXPECT_GT(step, FewestSteps);
}

TEST_F(BoundGroupFault, InConnectingLeavesAMemberWithoutAPeer) {
    const Winsock::AddressIpv4 peer = LocalAddress(sender_);
    unsigned int step = First;
    for (bool failed = true; failed && !HasFailure(); ++step) {
        TakeReceiverOnAllAddresses();
        ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
        // The peer's name is asked for to clear the queue of strangers, which can wait.
        failed = FailsAt(
            step, [&] { return Connect(receiver_, peer); }, SystemCall::Getpeername);
        if (failed) {
            EXPECT_TRUE(FailsWith(10057, Send(receiver_, "x"))) << step;
            SendToGroup(NewBoundDatagram(), "from anybody");
            EXPECT_EQ(Receive(receiver_), "from anybody") << step;
            EXPECT_TRUE(Succeeds(Connect(receiver_, peer))) << step;
        }
        ExpectPeerOnly();
    }
    EXPECT_GT(step, FewestSteps);
}

TEST_F(BoundGroupFault, InLeavingLeavesAMember) {
    TakeReceiver(NewDatagram());
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    {
        const FailingCall fails(SystemCall::Setsockopt, ENOMEM, {.option = IP_DROP_MEMBERSHIP});
        EXPECT_TRUE(FailsWith(10055, SetMembership(receiver_, Leave, Group)));
    }
    ASSERT_TRUE(Succeeds(Bind(receiver_, Loopback(0))));
    port_ = LocalPort(receiver_);
    ExpectGroup();
}

TEST_F(BoundGroupFault, InBindingIsTold) {
    unsigned int step = First;
    for (bool failed = true; failed && !HasFailure(); ++step) {
        TakeReceiver(NewDatagram());
        ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
        failed = FailsAt(step, [&] { return Bind(receiver_, Loopback(0)); });
    }
    port_ = LocalPort(receiver_);
    ExpectGroup();
    EXPECT_GT(step, FewestSteps);
}

// Whoever has the descriptor, too, may have left the group.
TEST_F(BoundGroupFault, IsNotJoinedAgainForASocketThatHasLostIt) {
    TakeReceiver(NewDatagram());
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, OtherGroup)));
    ASSERT_EQ(::setsockopt(static_cast<int>(receiver_.Get()), IPPROTO_IP, IP_DROP_MEMBERSHIP,
                           &OtherGroup, sizeof OtherGroup),
              0);
    ASSERT_TRUE(Succeeds(Bind(receiver_, Loopback(0))));
    port_ = LocalPort(receiver_);
    ExpectGroup();
    EXPECT_TRUE(FailsWith(10022, SetMembership(receiver_, Leave, OtherGroup)));
}

TEST_F(BoundGroupFault, ThatSomebodyElseHasLeftIsJoinedAnewOnce) {
    TakeReceiver(NewDatagram());
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    ASSERT_EQ(::setsockopt(static_cast<int>(receiver_.Get()), IPPROTO_IP, IP_DROP_MEMBERSHIP,
                           &Group, sizeof Group),
              0);
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    ASSERT_TRUE(Succeeds(Bind(receiver_, Loopback(0))));
    port_ = LocalPort(receiver_);
    ExpectGroup();
}

}  // namespace
}  // namespace Conformance

// What accepting a connection takes of the system.
#include <sys/socket.h>

#include <cerrno>

#include "ClosedStandardStreams.h"
#include "conformance/Provocation.h"
#include "conformance/Scene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

constexpr int OfDeadConnections[] = {ECONNABORTED, EHOSTDOWN,   EHOSTUNREACH, ENETDOWN, ENETUNREACH,
                                     ENONET,       ENOPROTOOPT, EOPNOTSUPP,   EPROTO};

class AcceptOfADeadConnection : public testing::WithParamInterface<bool>, public Started {
protected:
    void SetUp() override {
        Started::SetUp();
        listener_ = NewListener();
        SetNonBlocking(listener_, GetParam());
    }
    void TearDown() override {
        listener_.Close();
        Started::TearDown();
    }

    OwnedSocket listener_;
};

TEST_P(AcceptOfADeadConnection, IsPassedOver) {
    for (const int error : OfDeadConnections) {
        const RawPeer client = RawPeer::ConnectedTo(LocalPort(listener_));
        const FailingCall dead(SystemCall::Accept4, error, {.count = 100});
        const OwnedSocket accepted(Winsock::accept(listener_.Get(), nullptr, nullptr));
        EXPECT_TRUE(IsOpen(accepted.Get())) << error;
        EXPECT_EQ(dead.Seen(), 101U);
    }
}

TEST_P(AcceptOfADeadConnection, WithoutEndIsAFailure) {
    constexpr int numbers[] = {10053, 10064, 10065, 10050, 10051, 10065, 10042, 10045, 10022};
    const int* number = numbers;
    for (const int error : OfDeadConnections) {
        const FailingCall end(SystemCall::Accept4, ETIMEDOUT);
        const FailingCall dead(SystemCall::Accept4, error, {.count = 100'000});
        EXPECT_TRUE(FailsWith(*number++, Winsock::accept(listener_.Get(), nullptr, nullptr)));
    }
}

INSTANTIATE_TEST_SUITE_P(BothModes, AcceptOfADeadConnection, testing::Bool());

using AcceptOfADeadConnectionAlone = Started;

TEST_F(AcceptOfADeadConnectionAlone, IsNobodyToANonBlockingListener) {
    const OwnedSocket listener = NewListener();
    SetNonBlocking(listener);
    for (const int error : OfDeadConnections) {
        const FailingCall dead(SystemCall::Accept4, error, {.count = 1});
        EXPECT_TRUE(FailsWith(10035, Winsock::accept(listener.Get(), nullptr, nullptr))) << error;
    }
}

using AcceptingTimeout = Started;

TEST_F(AcceptingTimeout, ThatWasSetBeforehandTakesNoFurtherCall) {
    const OwnedSocket listener = NewBoundStream();
    ASSERT_TRUE(Succeeds(SetOption(listener, Winsock::OptionReceiveTimeout, 10)));
    ASSERT_TRUE(Succeeds(Winsock::listen(listener.Get(), 5)));
    const RawPeer client = RawPeer::ConnectedTo(LocalPort(listener));
    const CountedCall questions(SystemCall::Getsockopt);
    const CountedCall settings(SystemCall::Setsockopt);
    const OwnedSocket socket = Accept(listener);
    EXPECT_EQ(questions.Seen() + settings.Seen(), 0U);
    EXPECT_TRUE(FailsWith(10060, TryReceive(socket)));
}

TEST_F(AcceptingTimeout, LimitsAnInterruptedReceiveOfTheConnectionToo) {
    const OwnedSocket listener = NewBoundStream();
    ASSERT_TRUE(Succeeds(SetOption(listener, Winsock::OptionReceiveTimeout, 60'000)));
    ASSERT_TRUE(Succeeds(Winsock::listen(listener.Get(), 5)));
    const RawPeer client = RawPeer::ConnectedTo(LocalPort(listener));
    const OwnedSocket socket = Accept(listener);
    client.Send("x");
    const FailingCall interrupted(SystemCall::Recv, EINTR, {.count = 1});
    const CountedCall limits(SystemCall::Getsockopt, {.option = SO_RCVTIMEO});
    EXPECT_EQ(Receive(socket), "x");
    EXPECT_EQ(limits.Seen(), 1U);
}

TEST_F(AcceptingTimeout, ThatWasSetMeanwhileIsNobodysIfNobodyComes) {
    const OwnedSocket listener = NewListener();
    SetNonBlocking(listener);
    ASSERT_TRUE(Succeeds(SetOption(listener, Winsock::OptionReceiveTimeout, 10)));
    EXPECT_TRUE(FailsWith(10035, Winsock::accept(listener.Get(), nullptr, nullptr)));
}

TEST_F(AcceptingTimeout, ThatCannotBeTakenOverIsAFailureThatLeavesNothingBehind) {
    const OwnedSocket listener = NewListener();
    ASSERT_TRUE(Succeeds(SetOption(listener, Winsock::OptionReceiveTimeout, 10)));
    for (const SystemCall call : {SystemCall::Getsockopt, SystemCall::Setsockopt}) {
        for (const int option : {SO_RCVTIMEO, SO_SNDTIMEO}) {
            const RawPeer client = RawPeer::ConnectedTo(LocalPort(listener));
            const Winsock::Handle nextNumber = NewStream().Get();
            const FailingCall fails(call, ENOMEM, {.option = option});
            const OwnedSocket none(Winsock::accept(listener.Get(), nullptr, nullptr));
            EXPECT_TRUE(FailsWith(10055, none.Get()));
            EXPECT_EQ(NewStream().Get(), nextNumber);
        }
    }
}

using AcceptRefused = Started;

TEST_F(AcceptRefused, ForWantOfAListenerBeforeTheAddressIsLookedAt) {
    const OwnedSocket socket = NewBoundStream();
    Winsock::AddressIpv4 address = {};
    int tooShort = 1;
    EXPECT_TRUE(FailsWith(10022, Winsock::accept(socket.Get(), &address, &tooShort)));
    EXPECT_TRUE(FailsWith(10022, Winsock::accept(socket.Get(), &address, nullptr)));
}

// Whatever an earlier call has left in errno.
TEST_F(AcceptRefused, ByNobodyIsAConnectionWithTheNumberOfAStandardStream) {
    const OwnedSocket listener = NewListener();
    SetNonBlocking(listener);
    const RawPeer client = RawPeer::ConnectedTo(LocalPort(listener));
    Winsock::Handle accepted = Winsock::InvalidSocket;
    unsigned int attempts = 0;
    {
        const ClosedStandardStreams closed;
        const HookedCall accepts(SystemCall::Accept4, [](const Call& call) {
            const Word result = call.Make();
            errno = result == 0 ? EINTR : errno;
            return result;
        });
        accepted = Winsock::accept(listener.Get(), nullptr, nullptr);
        attempts = accepts.Seen();
    }
    EXPECT_TRUE(IsOpen(OwnedSocket(accepted).Get()));
    EXPECT_EQ(attempts, 1U);
}

}  // namespace
}  // namespace Conformance

// What limits a transfer whose first attempt was not the last one.
#include <sys/socket.h>

#include <cerrno>
#include <string>
#include <thread>

#include "BoundGroupScene.h"
#include "conformance/Scene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

Word SendOneByte(const Call& call) {
    return Word{::send(static_cast<int>(call.Argument(0)), call.Pointer<char>(1), 1, 0)};
}

using TransferLimit = Started;

TEST_F(TransferLimit, OfANonBlockingSendIsWhatTheSystemTakesWhateverTheTimeLimit) {
    const Pair pair = NewConnectedPair();
    ASSERT_TRUE(Succeeds(SetOption(pair.client, Winsock::OptionSendTimeout, 60'000)));
    SetNonBlocking(pair.client);
    const HookedCall sends(SystemCall::Send, SendOneByte);
    EXPECT_TRUE(Succeeds(Send(pair.client, "abc"), 1));
    EXPECT_EQ(sends.Seen(), 1U);
}

// Whatever an earlier call has left in errno.
TEST_F(TransferLimit, OfASendThatIsCutShortIsNotItsBeginning) {
    const Pair pair = NewConnectedPair();
    const HookedCall sends(SystemCall::Send, [](const Call& call) {
        const Word sent = SendOneByte(call);
        errno = EINTR;
        return sent;
    });
    EXPECT_TRUE(Succeeds(Send(pair.client, "abc"), 3));
    EXPECT_EQ(Receive(pair.server), "abc");
}

TEST_F(TransferLimit, OfASendIsOverWhenTheSystemHasWaitedSoLong) {
    const Pair pair = NewConnectedPair();
    ASSERT_TRUE(Succeeds(SetOption(pair.client, Winsock::OptionSendTimeout, 50)));
    const std::string more(1U << 24U, 'x');
    const CountedCall sends(SystemCall::Send);
    EXPECT_GT(Send(pair.client, more), 0);
    EXPECT_EQ(sends.Seen(), 1U);
}

TEST_F(TransferLimit, CountsTheTimeBeforeASignal) {
    const Pair pair = NewConnectedPair();
    ASSERT_TRUE(Succeeds(SetOption(pair.server, Winsock::OptionReceiveTimeout, 50)));
    const HookedCall receives(SystemCall::Recv, [&pair](const Call& call) {
        std::this_thread::sleep_for(Milliseconds(60));
        EXPECT_TRUE(Succeeds(Send(pair.client, "too late"), 8));
        return call.Fail(EINTR);
    });
    EXPECT_TRUE(FailsWith(10060, TryReceive(pair.server)));
    EXPECT_EQ(receives.Seen(), 1U);
}

// What was sent stands, though the socket is closed before the call has ended.
TEST_F(TransferLimit, OfASendIsNotThatItsSocketIsClosed) {
    Pair pair = NewConnectedPair();
    ASSERT_TRUE(Succeeds(SetOption(pair.client, Winsock::OptionSendTimeout, 60'000)));
    const Winsock::Handle handle = pair.client.Take();
    std::thread closer;
    {
        const HookedCall sends(SystemCall::Send, [&](const Call& call) {
            const Word sent = call.Make();
            closer = std::thread([handle] { Winsock::closesocket(handle); });
            while (Winsock::listen(handle, 1) != 0 && Winsock::WSAGetLastError() != 10038)
                std::this_thread::yield();
            return sent;
        });
        EXPECT_TRUE(Succeeds(Winsock::send(handle, "x", 1, 0), 1));
    }
    closer.join();
}

using TransferLimitOfAMember = BoundGroup;

// It reads from several queues, but sends from its own.
TEST_F(TransferLimitOfAMember, IsWaitedForAtTheSocketThatSends) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    ASSERT_TRUE(Succeeds(SetOption(receiver_, Winsock::OptionSendTimeout, 20'000)));
    const FailingCall interrupted(SystemCall::Sendto, EINTR, {.count = 1});
    EXPECT_LT(
        TimeOf([&] { EXPECT_TRUE(Succeeds(SendTo(receiver_, "x", LocalAddress(sender_)), 1)); }),
        Milliseconds(15'000));
}

}  // namespace
}  // namespace Conformance

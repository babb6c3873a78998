// How a call that waits is woken when its socket is closed.
#include <sys/socket.h>

#include <chrono>
#include <vector>

#include "conformance/Scene.h"
#include "support/WaitingCall.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;
using Clock = std::chrono::steady_clock;

using ClosingCall = Started;

// For a receiver it is enough to end receiving, and the peer notices nothing. All else is ended
// when that has not helped for a while.
TEST_F(ClosingCall, IsWokenByTheEndOfReceivingFirst) {
    Pair pair = NewConnectedPair();
    const Winsock::Handle handle = pair.server.Take();
    Support::WaitingCall<int> receiving([handle] {
        char byte = 0;
        return Winsock::recv(handle, &byte, 1, 0);
    });
    std::vector<Word> ends;
    const Clock::time_point begin = Clock::now();
    Clock::time_point last = begin;
    {
        const HookedCall shutdowns(SystemCall::Shutdown, [&](const Call& call) {
            const Word how = call.Argument(1);
            if (ends.empty() || how != ends.back()) {
                ends.push_back(how);
                last = Clock::now();
            }
            return how == SHUT_RD ? Word{0} : call.Make();
        });
        EXPECT_TRUE(Succeeds(Winsock::closesocket(handle)));
    }
    EXPECT_EQ(receiving.Finish(), Winsock::SocketError);
    EXPECT_EQ(ends, (std::vector<Word>{SHUT_RD, SHUT_RDWR}));
    EXPECT_GE(last - begin, Milliseconds(20));
}

}  // namespace
}  // namespace Conformance

// A process that forks while it has sockets: the calls of the parent's threads are none of the
// child's.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "conformance/DatagramScene.h"
#include "conformance/Provocation.h"
#include "conformance/Scene.h"
#include "support/WaitingCall.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

bool IsClosed(Winsock::Handle handle) {
    return ::fcntl(static_cast<int>(handle), F_GETFD) < 0;
}

bool ClosesAtOnce(Winsock::Handle handle) {
    return Winsock::closesocket(handle) == 0 && IsClosed(handle);
}

bool HasSucceeded(pid_t child) {
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool SucceedsInAChild(const std::function<bool()>& scene) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(scene() ? 0 : 1);
    return HasSucceeded(child);
}

OwnedSocket NewBoundDatagramWithNumber(int number) {
    const HookedCall makes(SystemCall::Socket, [number](const Call& call) {
        const int made = static_cast<int>(call.Make());
        const Word moved = ::fcntl(made, F_DUPFD_CLOEXEC, number);
        ::close(made);
        return moved;
    });
    return NewBoundDatagram();
}

using Fork = Started;

// The numbers of sockets that came and went before are lower, and so is that of the last one.
TEST_F(Fork, LeavesTheChildNoneOfTheCallsThatWait) {
    constexpr int number = 8000;
    const DescriptorLimit limit(number + 100);
    if (!limit.IsSet()) GTEST_SKIP() << "the system does not allow so many descriptors";
    const OwnedSocket socket = NewBoundDatagramWithNumber(number);
    const OwnedSocket last = NewBoundDatagram();
    const Winsock::Handle handle = socket.Get();
    Support::WaitingCall<int> waiting([&socket] { return TryReceive(socket); });
    EXPECT_TRUE(SucceedsInAChild([handle] { return ClosesAtOnce(handle); }));
    EXPECT_EQ(SendTo(last, "x", LocalAddress(socket)), 1);
    EXPECT_EQ(waiting.Finish(), 1);
}

// As a signal's handler does that has interrupted a call: in the child that call goes on.
TEST_F(Fork, InsideACallLetsTheChildEndItAndCloseTheSocket) {
    const Pair pair = NewConnectedPair();
    ASSERT_TRUE(Succeeds(Send(pair.client, "x"), 1));
    bool childSucceeds = false;
    pid_t child = -1;
    char byte = 0;
    int result = 0;
    {
        const HookedCall forks(SystemCall::Recv, [&](const Call& call) {
            child = ::fork();
            if (child > 0) childSucceeds = HasSucceeded(child);
            return child == 0 ? Word{1} : call.Make();
        });
        result = Winsock::recv(pair.server.Get(), &byte, 1, 0);
    }
    if (child == 0) ::_exit(result == 1 && ClosesAtOnce(pair.server.Get()) ? 0 : 1);
    EXPECT_TRUE(Succeeds(result, 1));
    EXPECT_TRUE(childSucceeds);
}

}  // namespace
}  // namespace Conformance

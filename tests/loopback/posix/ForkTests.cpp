// A process that forks while the library works.
#include <loopback/Failure.h>
#include <loopback/LoopbackTest.h>
#include <support/WaitingCall.h>
#include <support/posix/SystemCallFaults.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace Loopback {
namespace {

using namespace SystemCalls;

class Fork : public LoopbackTest {};

int ExitCodeOf(pid_t child) {
    int status = 0;
    if (::waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
}

// As a signal's handler does that has interrupted a call: in the child that call goes on.
TEST_F(Fork, InsideACallLetsTheChildEndCallsByClosing) {
    const Connection connection = Connected();
    SendAll(*connection.client, "x");
    pid_t child = -1;
    int exitCode = -1;
    {
        const HookedCall forks(SystemCall::Recv,
                               [&](const Call& call) {
                                   child = ::fork();
                                   if (child != 0) exitCode = ExitCodeOf(child);
                                   return child == 0 ? call.Make() : call.Fail(ENOMEM);
                               },
                               {.count = 1});
        FailureOf([&] { ReceiveSome(*connection.server, 1); });
    }
    if (child == 0) {
        Support::WaitingCall<int> waits([&] { return FailureOfReceive(*connection.server).code; });
        connection.server->Close();
        ::_exit(waits.Finish() == 10004 ? 0 : 1);
    }
    EXPECT_EQ(exitCode, 0);
}

}  // namespace
}  // namespace Loopback

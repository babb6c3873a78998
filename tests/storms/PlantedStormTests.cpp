// What the storms are to see is seen: each kind of fault, planted below the library or beside it.
#include <VelNet/SocketInitialization.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>

#include "storms/posix/Storms.h"
#include "support/posix/SystemCallFaults.h"

namespace Storms {
namespace {

using namespace SystemCalls;

constexpr Signals Storm = {1'000, false};

::testing::AssertionResult Tells(const Totals& totals, const char* what) {
    for (const std::string& failure : totals.failures) {
        if (failure.find(what) != std::string::npos) return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << totals.failures.size() << " other failures";
}

TEST(PlantedStorm, ThatSpoilsAByteIsSeen) {
    const HookedCall spoils(SystemCall::Recv,
                            [](const Call& call) {
                                const Word come = call.Make();
                                if (come > 0) ++*call.Pointer<char>(1);
                                return come;
                            },
                            {.first = 20, .count = 1, .inAnyThread = true});
    EXPECT_TRUE(Tells(TransfersUnderSignals(Storm, 300'000), "a stream: other bytes arrive"));
}

// A wait that begins anew after each signal does not end.
TEST(PlantedStorm, ThatProlongsAWaitIsSeen) {
    const HookedCall beginsAnew(SystemCall::Ppoll,
                                [](const Call& call) {
                                    Word ready = call.Make();
                                    while (ready < 0 && errno == EINTR)
                                        ready = call.Make();
                                    return ready;
                                },
                                {.inAnyThread = true});
    const Totals totals = WaitsUnderSignals(Storm, std::chrono::seconds(2));
    EXPECT_TRUE(Tells(totals, "a wait to receive: it ends with the code 10004"));
    EXPECT_TRUE(Tells(totals, "a wait for a set: it ends with the code 10004"));
}

TEST(PlantedStorm, ThatForgetsAStartUpIsSeen) {
    const VelNet::SocketInitialization forgotten;
    EXPECT_TRUE(Tells(StartUpsInThreads(4, 20), "the layer is up"));
}

TEST(PlantedStorm, ThatForgetsADescriptorIsSeen) {
    std::FILE* forgotten = nullptr;
    const HookedCall forgets(SystemCall::Listen,
                             [&](const Call& call) {
                                 forgotten = std::fopen("/dev/null", "r");
                                 return call.Make();
                             },
                             {.count = 1, .inAnyThread = true});
    EXPECT_TRUE(Tells(SwitchedLogs(2, 5), "descriptors are left over"));
    std::fclose(forgotten);
}

}  // namespace
}  // namespace Storms

// Each of the module's allocations fails, in every scene: the quick cut.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "faults/posix/Campaign.h"

namespace Faults {
namespace {

TEST(AllocationFaults, LoseNothing) {
    if (!PrepareSurroundings()) GTEST_SKIP() << "the system lets no network of its own be made";
    const Totals totals = PlayWithFaults(Scenes(), Stage::Allocations, {});
    std::printf("%s\n", LineOf(totals, "allocation faults").c_str());
    for (const std::string& failure : totals.failures)
        ADD_FAILURE() << failure;
    EXPECT_GT(totals.outOfMemory, 800U);
}

}  // namespace
}  // namespace Faults

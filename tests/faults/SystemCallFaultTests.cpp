// Each of the module's calls to the C library fails, in every scene: the quick cut. All of it, with
// every number and for good, is fault_campaign's.
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "faults/posix/Campaign.h"
#include "faults/posix/ErrorNumbers.h"

namespace Faults {
namespace {

class SystemCallFaults : public testing::Test {
protected:
    void SetUp() override {
        if (!PrepareSurroundings()) GTEST_SKIP() << "the system lets no network of its own be made";
    }
};

class SystemCallFaultsPart : public SystemCallFaults,
                             public testing::WithParamInterface<std::size_t> {};

TEST_P(SystemCallFaultsPart, LosesNothing) {
    const Totals totals = PlayWithFaults(ScenesOf(GetParam()), Stage::SystemCalls, {});
    std::printf("%s\n", LineOf(totals, "system-call faults").c_str());
    for (const std::string& failure : totals.failures)
        ADD_FAILURE() << failure;
    EXPECT_GT(totals.cases, 300U);
    EXPECT_GT(totals.exceptions, 100U);
}

INSTANTIATE_TEST_SUITE_P(Quick, SystemCallFaultsPart, testing::Range<std::size_t>(0, SceneParts));

TEST_F(SystemCallFaults, EveryFunctionIsCalledBySomeScene) {
    std::set<std::string> called;
    for (const Scene& scene : Scenes()) {
        const std::vector<std::string> functions = FunctionsOf(scene);
        called.insert(functions.begin(), functions.end());
    }
    for (const FailingFunction& function : FailingFunctions())
        EXPECT_EQ(called.count(function.symbol), 1U) << function.symbol;
}

}  // namespace
}  // namespace Faults

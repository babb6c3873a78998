// The scenes in threads that are cancelled, in processes that fork, with few descriptors or only
// high ones, and with thousands of signals a second: the quick cut.
#include <gtest/gtest.h>

#include <cstdio>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "faults/posix/Campaign.h"

namespace Faults {
namespace {

struct Storm {
    Stage stage;
    const char* what;
    unsigned int fewestCases;  // in each part
    unsigned int Totals::*effect;
    unsigned int fewestEffects;
};

void PrintTo(const Storm& storm, std::ostream* stream) {
    *stream << storm.what;
}

constexpr Storm Storms[] = {
    {Stage::Cancellations, "cancelled threads", 150, &Totals::cancelled, 80},
    {Stage::Forks, "forks", 20, &Totals::completed, 20},
    {Stage::Descriptors, "closed streams, high numbers and exhaustion", 150, &Totals::exceptions,
     30},
    {Stage::Signals, "signals", 10, &Totals::completed, 10},
};

class StormOf : public testing::TestWithParam<std::tuple<Storm, std::size_t>> {};

TEST_P(StormOf, LosesNothing) {
    if (!PrepareSurroundings()) GTEST_SKIP() << "the system lets no network of its own be made";
    const auto& [storm, part] = GetParam();
    const Totals totals = PlayWithFaults(ScenesOf(part), storm.stage, {});
    std::printf("%s\n", LineOf(totals, storm.what).c_str());
    for (const std::string& failure : totals.failures)
        ADD_FAILURE() << failure;
    EXPECT_GE(totals.cases, storm.fewestCases);
    EXPECT_GE(totals.*storm.effect, storm.fewestEffects);
}

INSTANTIATE_TEST_SUITE_P(Quick, StormOf,
                         testing::Combine(testing::ValuesIn(Storms),
                                          testing::Range<std::size_t>(0, SceneParts)));

}  // namespace
}  // namespace Faults

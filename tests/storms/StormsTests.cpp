// The short cut of what storm_campaign does at length.
#include <gtest/gtest.h>

#include <cstdio>
#include <ostream>

#include "storms/posix/Storms.h"

namespace Support {

static void PrintTo(const SignalStorm::Kind& kind, std::ostream* stream) {
    *stream << kind.perSecond << " a second" << (kind.restarts ? " that restart" : "");
}

}  // namespace Support

namespace Storms {
namespace {

void ExpectNoFailure(const Totals& totals) {
    std::printf("%s\n", LineOf(totals).c_str());
    for (const std::string& failure : totals.failures)
        ADD_FAILURE() << failure;
}

class StormsOfSignals : public testing::TestWithParam<Signals> {};

TEST_P(StormsOfSignals, LeaveTransfersWhole) {
    const Totals totals = TransfersUnderSignals(GetParam(), 3'000'000);
    ExpectNoFailure(totals);
    EXPECT_GT(totals.signals, 0U);
}

TEST_P(StormsOfSignals, LeaveWaitsTheirTime) {
    const Totals totals = WaitsUnderSignals(GetParam(), std::chrono::seconds(60));
    ExpectNoFailure(totals);
    EXPECT_GT(totals.signals, 100U);
}

INSTANTIATE_TEST_SUITE_P(StormsOfSignals, StormsOfSignals,
                         testing::Values(Signals{1'000, false}, Signals{1'000, true},
                                         Signals{10'000, false}, Signals{10'000, true}));

TEST(Storms, OfStartUpsEndWithTheLayerDown) {
    const Totals totals = StartUpsInThreads(64, 200);
    ExpectNoFailure(totals);
    EXPECT_GT(totals.failedStartUps, 0U);
}

TEST(Storms, OfSwitchedLogsLoseNothing) {
    ExpectNoFailure(SwitchedLogs(32, 30));
}

}  // namespace
}  // namespace Storms

// What the campaign is to see is seen: each kind of loss, planted where a fault strikes.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "faults/posix/Campaign.h"

namespace Faults {
namespace {

Scene SmallScene() {
    const std::vector<Scene> all = Scenes();
    return *std::find_if(all.begin(), all.end(), [](const Scene& scene) {
        return scene.name == std::string("collection");
    });
}

struct Plant {
    Planted what;
    const char* told;
};

class PlantedFault : public testing::TestWithParam<Plant> {};

TEST_P(PlantedFault, IsSeen) {
    if (!PrepareSurroundings()) GTEST_SKIP() << "the system lets no network of its own be made";
    const Totals totals =
        PlayWithFaults(SmallScene(), Stage::Allocations, {.planted = GetParam().what});
    ASSERT_FALSE(totals.failures.empty());
    EXPECT_EQ(totals.failures.size(), totals.cases);
    EXPECT_NE(totals.failures.front().find(GetParam().told), std::string::npos)
        << totals.failures.front();
}

INSTANTIATE_TEST_SUITE_P(
    PlantedFault, PlantedFault,
    testing::Values(Plant{Planted::Descriptor, "descriptor"}, Plant{Planted::Memory, "2 blocks"},
                    Plant{Planted::Key, "thread keys"}, Plant{Planted::StartUp, "start-ups"},
                    Plant{Planted::Thread, "threads"}, Plant{Planted::Sink, "sink"},
                    Plant{Planted::Exception, "planted exception"},
                    Plant{Planted::Crash, "Aborted"}));

}  // namespace
}  // namespace Faults

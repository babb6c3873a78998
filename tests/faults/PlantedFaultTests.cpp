// What the campaign is to see is seen: each kind of loss, planted where a fault strikes.
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "faults/posix/Campaign.h"

namespace Faults {
namespace {

Scene SceneOf(const std::string& name) {
    const std::vector<Scene> all = Scenes();
    return *std::find_if(all.begin(), all.end(),
                         [&](const Scene& scene) { return scene.name == name; });
}

struct Plant {
    Planted what;
    const char* told;
    Stage stage = Stage::Allocations;
};

void PrintTo(const Plant& plant, std::ostream* stream) {
    *stream << plant.told << " in stage " << static_cast<int>(plant.stage);
}

// A small one; forks come before calls that may wait.
Scene SceneFor(const Plant& plant) {
    return SceneOf(plant.stage == Stage::Forks ? "selection" : "collection");
}

class PlantedFault : public testing::TestWithParam<Plant> {};

TEST_P(PlantedFault, IsSeen) {
    if (!PrepareSurroundings()) GTEST_SKIP() << "the system lets no network of its own be made";
    const Totals totals =
        PlayWithFaults(SceneFor(GetParam()), GetParam().stage, {.planted = GetParam().what});
    ASSERT_FALSE(totals.failures.empty());
    // Where no descriptor is left none can be planted.
    const unsigned int without = GetParam().stage == Stage::Descriptors ? 2 : 0;
    EXPECT_EQ(totals.failures.size(), totals.cases - without);
    EXPECT_NE(totals.failures.front().find(GetParam().told), std::string::npos)
        << totals.failures.front();
}

INSTANTIATE_TEST_SUITE_P(
    PlantedFault, PlantedFault,
    testing::Values(Plant{Planted::Descriptor, "descriptor"}, Plant{Planted::Memory, "2 blocks"},
                    Plant{Planted::Key, "thread keys"}, Plant{Planted::StartUp, "start-ups"},
                    Plant{Planted::Thread, "threads"}, Plant{Planted::Sink, "sink"},
                    Plant{Planted::Exception, "planted exception"},
                    Plant{Planted::Crash, "Aborted"},
                    Plant{Planted::Descriptor, "descriptor", Stage::Cancellations},
                    Plant{Planted::StartUp, "start-ups", Stage::Cancellations},
                    Plant{Planted::Descriptor, "forked process has something", Stage::Forks},
                    Plant{Planted::Crash, "forked process ended by signal", Stage::Forks},
                    Plant{Planted::Descriptor, "standard stream", Stage::Descriptors},
                    Plant{Planted::Descriptor, "descriptor", Stage::Signals}));

}  // namespace
}  // namespace Faults

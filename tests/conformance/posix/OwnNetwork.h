// Scenes that change what belongs to the whole network.
#pragma once

#include <functional>

#include "conformance/Provocation.h"
#include "conformance/Scene.h"

namespace Conformance {

// Plays the scene, a test's whole content, in a process that has a network of its own, which is the
// loopback interface. The test is skipped when the system does not let us.
inline void InOwnNetwork(const std::function<void()>& scene) {
    const SceneResult result = RunWithNames("", "host", [&] {
        scene();
        return !testing::Test::HasFailure();
    });
    if (result == SceneResult::Impossible) GTEST_SKIP() << "needs a network of its own";
    EXPECT_EQ(result, SceneResult::Passed);
}

}  // namespace Conformance

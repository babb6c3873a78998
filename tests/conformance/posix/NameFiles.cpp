#include "NameFiles.h"

#include "conformance/Provocation.h"
#include "conformance/Scene.h"

namespace Conformance {

void WithNames(const std::string& hosts, const std::function<void()>& scene,
               const std::string& hostName, const std::string& sources) {
    const SceneResult result = RunWithNames(
        hosts, hostName,
        [&] {
            Winsock::StartupData data;
            EXPECT_EQ(Winsock::WSAStartup(0x202, &data), 0);
            scene();
            return !testing::Test::HasFailure();
        },
        sources);
    if (result == SceneResult::Impossible) GTEST_SKIP() << "not allowed to change name files";
    EXPECT_EQ(result, SceneResult::Passed);
}

}  // namespace Conformance

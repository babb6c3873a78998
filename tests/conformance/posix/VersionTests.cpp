// The release of Windows that this system stands for.
#include <Platform/System.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

namespace Conformance {
namespace {

TEST(VersionHere, IsALateReleaseWithoutServicePack) {
    System::VersionRecord version = {};
    version.size = sizeof version;
    std::fill(std::begin(version.servicePack), std::end(version.servicePack), 0xFFFF);
    ASSERT_TRUE(System::GetVersionExW(&version));
    EXPECT_EQ(version.majorVersion, 10U);
    EXPECT_EQ(version.minorVersion, 0U);
    EXPECT_EQ(version.buildNumber, 19045U);
    EXPECT_EQ(version.platform, 2U);
    EXPECT_EQ(version.servicePack[0], 0);
}

TEST(VersionHere, IsNotToldToNull) {
    EXPECT_FALSE(System::GetVersionExW(nullptr));
}

}  // namespace
}  // namespace Conformance

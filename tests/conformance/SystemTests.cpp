#include <Platform/System.h>

#include "Provocation.h"
#include "Scene.h"

namespace Conformance {
namespace {

TEST(SystemErrorDescriptions, AreNeverEmptyAndDifferForWhatDiffers) {
    for (unsigned int error = 0; error < 12'000; ++error) {
        EXPECT_FALSE(System::ErrorDescription(error).empty()) << error;
    }
    EXPECT_FALSE(System::ErrorDescription(0xFFFFFFFFU).empty());
    EXPECT_NE(System::ErrorDescription(10061), System::ErrorDescription(10060));
    EXPECT_NE(System::ErrorDescription(10093), System::ErrorDescription(10092));
    EXPECT_NE(System::ErrorDescription(11001), System::ErrorDescription(11004));
    EXPECT_NE(System::ErrorDescription(12345), System::ErrorDescription(12346));
}

TEST(SystemVersion, IsToldToARecordOfItsSize) {
    System::VersionRecord version = {};
    version.size = 276;
    ASSERT_TRUE(System::GetVersionExW(&version));
    EXPECT_EQ(version.size, 276U);
    EXPECT_GE(version.majorVersion, 6U);
    EXPECT_EQ(version.platform, 2U);
}

TEST(SystemVersion, IsNotToldToARecordOfAnotherSize) {
    for (const unsigned int size : {0U, 148U, 275U, 277U}) {
        System::VersionRecord version = {};
        version.size = size;
        EXPECT_FALSE(System::GetVersionExW(&version)) << size;
        EXPECT_EQ(version.size, size);
        EXPECT_EQ(version.majorVersion, 0U);
    }
}

TEST(SystemSleep, LastsAsLongAsAsked) {
    EXPECT_GE(TimeOf([] { System::Sleep(30); }), Milliseconds(30));
    EXPECT_GE(TimeOf([] { System::Sleep(1); }), Milliseconds(1));
    System::Sleep(0);
}

TEST(SystemSleep, IsNotCutShortBySignals) {
    InSignalStorm(10, [] { EXPECT_GE(TimeOf([] { System::Sleep(150); }), Milliseconds(150)); });
}

}  // namespace
}  // namespace Conformance

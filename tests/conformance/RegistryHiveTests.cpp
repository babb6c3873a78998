#include <Platform/Registry.h>
#include <gtest/gtest.h>

#include <climits>

namespace Conformance {
namespace {

// What a system numbers beyond its roots for other ends counts as none.
TEST(RegistryHives, ANumberThatIsNoHiveHasNoKeys) {
    constexpr unsigned short path[] = {'S', 'O', 'F', 'T', 'W', 'A', 'R', 'E', 0};
    constexpr unsigned short root[] = {0};
    for (const int hive : {INT_MIN, -4000, -1, 0, 5, 7, 8, 80, 97, 4000, INT_MAX}) {
        for (const unsigned short* name : {path, root}) {
            unsigned int error = 4711;
            EXPECT_EQ(Registry::OpenKey(hive, name, error), nullptr) << hive;
            EXPECT_EQ(error, 0U) << hive;
        }
    }
}

}  // namespace
}  // namespace Conformance

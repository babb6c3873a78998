// Sockets of no family, for which only a protocol decides how they are refused.
#include "conformance/Scene.h"

namespace Conformance {
namespace {

using CreationOfNoFamily = Started;

TEST_F(CreationOfNoFamily, IsRefusedForItsFamilyWhereItHasAProtocol) {
    for (const int protocol : {6, 17, 41, -1}) {
        EXPECT_TRUE(FailsWith(10047, Winsock::socket(0, 1, protocol))) << protocol;
        EXPECT_TRUE(FailsWith(10047, Winsock::socket(0, 2, protocol))) << protocol;
        EXPECT_TRUE(FailsWith(10044, Winsock::socket(0, 7, protocol))) << protocol;
    }
    for (const int type : {0, 1, 2, 7})
        EXPECT_TRUE(FailsWith(10022, Winsock::socket(0, type, 0))) << type;
}

}  // namespace
}  // namespace Conformance

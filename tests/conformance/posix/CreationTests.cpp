// Sockets of no family, for which only a protocol decides how they are refused, of protocols
// that nobody has, and what a new socket costs.
#include <netinet/in.h>
#include <sys/socket.h>

#include <utility>

#include "conformance/Scene.h"
#include "support/posix/SystemCallFaults.h"

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

using CreationOfANegativeProtocol = Started;

TEST_F(CreationOfANegativeProtocol, IsRefusedForItsProtocol) {
    for (const int family : {2, 23}) {
        for (const int type : {0, 1, 2})
            EXPECT_TRUE(FailsWith(10043, Winsock::socket(family, type, -1))) << family << type;
    }
}

using CreationWithOptions = Started;

// Only those of the socket's own family and type.
TEST_F(CreationWithOptions, TakesACallOfTheSystemForEachThatDiffers) {
    constexpr std::pair<int, unsigned int> streams[] = {{2, 0}, {23, 1}};
    for (const auto& [family, options] : streams) {
        const SystemCalls::CountedCall set(SystemCalls::SystemCall::Setsockopt);
        const OwnedSocket stream = NewStream(family);
        EXPECT_EQ(set.Seen(), options) << family;
        const OwnedSocket datagrams = NewDatagram(family);
        EXPECT_EQ(set.Seen(), options + 3) << family;
    }
}

TEST_F(CreationWithOptions, LetsRoutersCutDatagramsOfIpv4) {
    const OwnedSocket socket = NewDatagram();
    int discovery = -1;
    socklen_t length = sizeof discovery;
    ASSERT_EQ(::getsockopt(static_cast<int>(socket.Get()), IPPROTO_IP, IP_MTU_DISCOVER, &discovery,
                           &length),
              0);
    EXPECT_EQ(discovery, IP_PMTUDISC_DONT);
}

}  // namespace
}  // namespace Conformance

// Options that must be refused before the system sees them.
#include "conformance/Scene.h"

namespace Conformance {
namespace {

using SystemOption = Started;

constexpr char Value[4] = {1, 0, 0, 0};

TEST_F(SystemOption, OfAKnownProtocolsLevelIsRefusedAsAnOption) {
    const OwnedSocket stream = NewStream();
    const OwnedSocket datagram = NewDatagram();
    for (const int level : {Winsock::ProtocolTcp, Winsock::ProtocolUdp}) {
        EXPECT_TRUE(FailsWith(10042, Winsock::setsockopt(stream.Get(), level, 1, Value, 4)));
        EXPECT_TRUE(FailsWith(10042, Winsock::setsockopt(datagram.Get(), level, 1, Value, 4)));
    }
}

TEST_F(SystemOption, ReuseRefusesANegativeLength) {
    const OwnedSocket socket = NewStream();
    for (const int length : {-1, -2147483647 - 1}) {
        EXPECT_TRUE(
            FailsWith(10014, Winsock::setsockopt(socket.Get(), Winsock::LevelSocket,
                                                 Winsock::OptionReuseAddress, Value, length)));
    }
}

}  // namespace
}  // namespace Conformance

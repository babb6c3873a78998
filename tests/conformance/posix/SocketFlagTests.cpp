// The flags of a socket share one number, so that a call reads and changes them at once.
#include "sockets/SocketTable.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

namespace Conformance {
namespace {

TEST(SocketFlags, AreABitEachThatNoOtherHas) {
    using namespace Posix;
    const std::uint32_t flags[] = {
        Flag::Live,        Flag::Ipv6,          Flag::Datagram,   Flag::Bound,
        Flag::Listening,   Flag::Connecting,    Flag::Connected,  Flag::NonBlocking,
        Flag::Reuse,       Flag::Reset,         Flag::Aborted,    Flag::ReceiveTimeout,
        Flag::SendTimeout, Flag::ConnectFailed, Flag::Accepted,   Flag::Strangers,
        Flag::Concluding,  Flag::NewTimeouts,   Flag::OwnAddress, Flag::Reception,
        Flag::DirectSend,  Flag::DirectReceive,
    };
    std::uint32_t taken = 0;
    for (const std::uint32_t flag : flags) {
        EXPECT_EQ(std::popcount(flag), 1) << flag;
        EXPECT_EQ(taken & flag, 0U) << flag;
        taken |= flag;
    }
}

}  // namespace
}  // namespace Conformance

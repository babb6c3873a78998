// What the kernel is asked for when a datagram is sent, and how often.
#include <cerrno>
#include <cstring>

#include "conformance/DatagramScene.h"

namespace Conformance {
namespace {

using DatagramSending = Started;

// A result of 0 is no failure, and the number of an earlier one no report.
TEST_F(DatagramSending, OfNothingHappensOnceWhateverFailedBefore) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewDatagram();
    const Winsock::AddressIpv4 address = LocalAddress(receiver);
    for (const int earlier : {ECONNREFUSED, EHOSTUNREACH}) {
        errno = earlier;
        ASSERT_TRUE(Succeeds(SendTo(sender, "", address), 0));
        EXPECT_TRUE(Succeeds(TryReceive(receiver), 0));
        SetNonBlocking(receiver);
        EXPECT_TRUE(FailsWith(10035, TryReceive(receiver)));
        SetNonBlocking(receiver, false);
    }
}

// What IPv4 keeps its address in is another field of IPv6.
TEST_F(DatagramSending, OverIpv6IsNoBroadcastWhateverTheFlow) {
    const OwnedSocket receiver = NewBoundIpv6Datagram();
    Winsock::AddressIpv6 address = LocalIpv6Address(receiver);
    std::memset(&address.flowInformation, 0xFF, sizeof address.flowInformation);
    const OwnedSocket sender = NewDatagram(Winsock::FamilyIpv6);
    ASSERT_TRUE(Succeeds(SendTo(sender, "x", address), 1));
    EXPECT_EQ(Receive(receiver), "x");
}

}  // namespace
}  // namespace Conformance

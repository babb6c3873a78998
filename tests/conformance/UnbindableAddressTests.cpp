// Addresses that no socket can have, whatever is sent to them.
#include <cstring>

#include "Scene.h"
#include "WineAnswers.h"

namespace Conformance {
namespace {

using UnbindableAddress = Started;

Winsock::AddressIpv6 GroupIpv6() {
    const unsigned char group[16] = {0xFF, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    Winsock::AddressIpv6 address = LoopbackIpv6(0);
    std::memcpy(address.address, group, sizeof group);
    return address;
}

TEST_F(UnbindableAddress, IsThatOfAGroup) {
    for (const auto& group : {Ipv4(224, 0, 0, 1, 0), Ipv4(239, 255, 255, 255, 0)}) {
        EXPECT_TRUE(FailsWith(10049, Bind(NewDatagram(), group), "binding to a group"));
        EXPECT_TRUE(FailsWith(10049, Bind(NewStream(), group), "binding to a group"));
    }
}

TEST_F(UnbindableAddress, IsThatOfAnIpv6Group) {
    Winsock::AddressIpv6 onLink = GroupIpv6();
    onLink.scope = 1;
    for (const auto& group : {GroupIpv6(), onLink}) {
        EXPECT_TRUE(FailsWith(10049, Bind(NewDatagram(Winsock::FamilyIpv6), group),
                              "binding to a group of IPv6"));
        EXPECT_TRUE(FailsWith(10049, Bind(NewStream(Winsock::FamilyIpv6), group),
                              "binding to a group of IPv6"));
    }
}

TEST_F(UnbindableAddress, IsThatOfEverybody) {
    const Winsock::AddressIpv4 everybody = Ipv4(255, 255, 255, 255, 0);
    EXPECT_TRUE(FailsWith(10049, Bind(NewDatagram(), everybody), "binding to everybody"));
    EXPECT_TRUE(FailsWith(10049, Bind(NewStream(), everybody), "binding to everybody"));
}

TEST_F(UnbindableAddress, IsNoMatterForASocketThatIsBound) {
    EXPECT_TRUE(FailsWith(10022, Bind(NewBoundDatagram(), Ipv4(239, 1, 2, 3, 0))));
    EXPECT_TRUE(FailsWith(10022, Bind(NewBoundStream(), Ipv4(239, 1, 2, 3, 0))));
}

}  // namespace
}  // namespace Conformance

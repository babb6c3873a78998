// Ports that the system gives to datagram sockets.
#include <fstream>

#include "OwnNetwork.h"
#include "conformance/DatagramScene.h"

namespace Conformance {
namespace {

using DatagramPort = Started;

constexpr unsigned int OnlyPort = 50'000;

// The system has one port to give, for either family and protocol.
void LeaveOnePort() {
    std::ofstream range("/proc/sys/net/ipv4/ip_local_port_range");
    range << OnlyPort << ' ' << OnlyPort << std::flush;
    ASSERT_TRUE(range.good());
}

OwnedSocket NewReusing(int family = Winsock::FamilyIpv4) {
    OwnedSocket socket = NewDatagram(family);
    EXPECT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReuseAddress, 1)));
    return socket;
}

Winsock::AddressIpv4 Anywhere(unsigned int port) {
    return Ipv4(0, 0, 0, 0, port);
}

// None of the ways to a port is left; the one that is taken is open to all that share it.
template <typename Address>
void ExpectNoneLeft(const std::function<OwnedSocket()>& make, const Address& any,
                    const Address& peer) {
    const OwnedSocket socket = make();
    EXPECT_TRUE(FailsWith(10048, Bind(socket, any)));
    EXPECT_TRUE(FailsWith(10048, SendTo(socket, "x", peer)));
    EXPECT_TRUE(FailsWith(10048, Connect(socket, peer)));
    SetNonBlocking(socket);
    EXPECT_TRUE(FailsWith(10022, TryReceive(socket)));
}

TEST_F(DatagramPort, IsNotToBeHadWhenAllAreTaken) {
    InOwnNetwork([] {
        LeaveOnePort();
        const OwnedSocket taker = NewDatagram();
        ASSERT_TRUE(Succeeds(Bind(taker, Anywhere(0))));
        ASSERT_EQ(LocalPort(taker), OnlyPort);
        const auto make = [] { return NewDatagram(); };
        ExpectNoneLeft(make, Anywhere(0), Loopback(9));
    });
}

TEST_F(DatagramPort, OfIpv6IsNotToBeHadWhenAllAreTaken) {
    InOwnNetwork([] {
        LeaveOnePort();
        Winsock::AddressIpv6 any = {};
        any.family = Winsock::FamilyIpv6;
        const OwnedSocket taker = NewDatagram(Winsock::FamilyIpv6);
        ASSERT_TRUE(Succeeds(Bind(taker, any)));
        const auto make = [] { return NewDatagram(Winsock::FamilyIpv6); };
        ExpectNoneLeft(make, any, LoopbackIpv6(9));
    });
}

TEST_F(DatagramPort, IsNotOneThatIsShared) {
    InOwnNetwork([] {
        LeaveOnePort();
        const OwnedSocket sharer = NewReusing();
        ASSERT_TRUE(Succeeds(Bind(sharer, Anywhere(0))));
        const auto make = [] { return NewReusing(); };
        ExpectNoneLeft(make, Anywhere(0), Loopback(9));
        // Whoever names the port may share it, also after it was refused.
        const OwnedSocket socket = NewReusing();
        ASSERT_TRUE(FailsWith(10048, Bind(socket, Anywhere(0))));
        EXPECT_TRUE(Succeeds(Bind(socket, Anywhere(OnlyPort))));
    });
}

TEST_F(DatagramPort, CanBeSharedThoughTheSystemChoseIt) {
    InOwnNetwork([] {
        LeaveOnePort();
        const auto bind = [](const OwnedSocket& socket) { return Bind(socket, Anywhere(0)); };
        const auto send = [](const OwnedSocket& socket) { return SendTo(socket, "", Loopback(9)); };
        const auto connect = [](const OwnedSocket& socket) { return Connect(socket, Loopback(9)); };
        for (const std::function<int(const OwnedSocket&)>& choose :
             {std::function<int(const OwnedSocket&)>(bind),
              std::function<int(const OwnedSocket&)>(send),
              std::function<int(const OwnedSocket&)>(connect)}) {
            const OwnedSocket first = NewReusing();
            EXPECT_TRUE(Succeeds(choose(first)));
            EXPECT_TRUE(Succeeds(Bind(NewReusing(), Anywhere(OnlyPort))));
            EXPECT_TRUE(FailsWith(10048, Bind(NewDatagram(), Anywhere(OnlyPort))));
        }
    });
}

}  // namespace
}  // namespace Conformance

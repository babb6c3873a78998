// The code of docs/ip-versions.md.
#include <VelNet/SocketXt.h>
#include <loopback/LoopbackTest.h>

namespace {

// Not called: the address is nobody's.
[[maybe_unused]] void ConnectOverIpv6() {
    const auto socket = VelNet::CreateSocketXt(
        VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP, VelNet::SocketXt::FAMILY_IPV6);
    socket->Connect("2001:db8::7", "80");
}

class IpVersionsGuide : public Loopback::LoopbackTest {};

TEST_F(IpVersionsGuide, ASocketHasTheVersionThatWasAskedFor) {
    const auto socket = VelNet::CreateSocketXt(
        VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP, VelNet::SocketXt::FAMILY_IPV4);
    EXPECT_EQ(socket->GetAddressFamily(), VelNet::SocketXt::FAMILY_IPV4);
}

}  // namespace

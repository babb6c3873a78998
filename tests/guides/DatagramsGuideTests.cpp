// The code of docs/datagrams.md that is not in the examples.
#include <VelNet/Exception.h>
#include <VelNet/SocketXt.h>
#include <loopback/LoopbackTest.h>
#include <support/Wine.h>

namespace {

using VelNet::Socket;

VelBase::ReturnPtrI<VelNet::SocketXt> Datagrams() {
    return VelNet::CreateSocketXt(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP,
                                  VelNet::SocketXt::FAMILY_IPV4);
}

// Not called: tests do not address everybody.
[[maybe_unused]] void Broadcast() {
    const auto socket = Datagrams();
    socket->SetSocketForBroadcast();
    socket->SendTo("hello", 5, VelNet::SPECIAL_BROADCAST, "7000");
}

class DatagramsGuide : public Loopback::LoopbackTest {};

TEST_F(DatagramsGuide, ASocketThatIsNotBoundCannotReceive) {
    const auto socket = Datagrams();
    socket->SetReceiveTimeout(100);
    char block[64];
    VelBase::ReturnString host;
    VelBase::ReturnString port;
    int code = 0;
    try {
        socket->RecvFrom(block, sizeof block, host, port);
    } catch (const VelNet::Exception& failure) {
        code = failure.GetErrorCode();
    }
    EXPECT_TRUE(code == VelNet::SOCKET_ERR_INVAL ||
                (Support::RunsOnWine() && code == VelNet::SOCKET_ERR_TIMEDOUT))
        << code;
}

}  // namespace

// The code of docs/blocking.md.
#include <VelCompanion/Transfers.h>
#include <VelNet/Exception.h>
#include <loopback/LoopbackTest.h>
#include <support/WaitingCall.h>
#include <support/Wine.h>

namespace {

// Serves clients until another thread closes the listener. Returns the code that ended it.
int AcceptUntilClosed(VelNet::Socket& listener) try {
    for (;;) {
        VelNet::SocketAddress address;
        const auto client = listener.Accept(address);
        VelCompanion::SendAll(*client, "welcome");
    }
} catch (const VelNet::Exception& failure) {
    return failure.GetErrorCode();  // SOCKET_ERR_INTR
}

class BlockingGuide : public Loopback::LoopbackTest {};

TEST_F(BlockingGuide, ClosingTheListenerStopsTheThreadThatAccepts) {
    const auto listener = Loopback::Listening();
    const auto client = Loopback::ConnectedTo(*listener);
    Support::WaitingCall<int> accepting([&] { return AcceptUntilClosed(*listener); });
    EXPECT_EQ(Loopback::ReceiveExactly(*client, 7), "welcome");
    listener->Close();
    const int code = accepting.Finish();
    EXPECT_TRUE(code == VelNet::SOCKET_ERR_INTR ||
                (Support::RunsOnWine() && code == VelNet::SOCKET_ERR_UNKNOWN))
        << code;
}

TEST_F(BlockingGuide, ATimeoutLimitsAReceive) {
    const Loopback::Connection connection = Loopback::Connected();
    const auto& socket = connection.client;
    socket->SetReceiveTimeout(100);
    char buffer[64];
    int code = 0;
    try {
        socket->Receive(buffer, sizeof buffer);
    } catch (const VelNet::Exception& failure) {
        code = failure.GetErrorCode();
    }
    EXPECT_EQ(code, VelNet::SOCKET_ERR_TIMEDOUT);
}

}  // namespace

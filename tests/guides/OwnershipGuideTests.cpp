// The code of docs/ownership-and-threads.md.
#include <VelBase/ReturnString.h>
#include <VelCompanion/Owners.h>
#include <VelLog/StandardErrorSink.h>
#include <loopback/LoopbackTest.h>

#include <cstdio>

namespace {

TEST(OwnershipGuide, ASecondOwnerKeepsTheSocketOpen) {
    const VelNet::SocketInitialization layer;
    VelNet::Socket* plain = nullptr;
    VelBase::ReturnPtrI<VelNet::Socket> kept;
    {
        const auto socket = Loopback::StreamSocket();
        VelBase::ReturnPtrI<VelNet::Socket> second(socket.Get());
        plain = socket.Get();
        kept = std::move(second);
    }
    EXPECT_EQ(kept.Get(), plain);
    EXPECT_TRUE(kept->IsValid());
}

TEST(OwnershipGuide, AStringLivesAsLongAsItsObject) {
    const VelNet::SocketInitialization layer;
    testing::internal::CaptureStdout();
    const VelBase::ReturnString name = VelNet::SocketAddress::GetLocalMachineName();
    std::puts(name.c_str());
    std::fflush(stdout);
    EXPECT_GT(testing::internal::GetCapturedStdout().size(), 1U);
}

TEST(OwnershipGuide, TheSinkOutlivesWhatWritesToIt) {
    testing::internal::CaptureStderr();
    Loopback::EnableOnly({Loopback::ConnectionTrace});
    {
        VelLog::StandardErrorSink sink;
        const VelCompanion::SinkInUse sinkInUse(sink);
        const VelNet::SocketInitialization socketLayer;
        const auto socket =
            VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    }
    Loopback::EnableOnly({});
    const std::string records = testing::internal::GetCapturedStderr();
    EXPECT_NE(records.find("Disconnected"), std::string::npos) << records;
}

}  // namespace

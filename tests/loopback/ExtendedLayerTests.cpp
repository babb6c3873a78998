// The extended socket and the start of the layer: what resolves starts Winsock for itself.
#include <loopback/ExtendedTest.h>
#include <loopback/ThisProcess.h>
#include <support/Wine.h>

#include <memory>

namespace Loopback {
namespace {

using VelNet::CreateSocketXt;
using VelNet::Socket;
using VelNet::SocketInitialization;

XtPtr OwnStream() {
    return CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
}

constexpr std::u16string_view NotStarted = u"Successful WSAStartup() not yet performed";
constexpr std::u16string_view NoSocket = u"Socket operation on nonsocket";

// Wine tells a socket that is gone from one that never was before it tells that it is not started.
void ExpectNotStarted(const Failure& failure, const Failure& notStarted, const Failure& onWine) {
    EXPECT_TRUE(failure == notStarted || (Support::RunsOnWine() && failure == onWine))
        << testing::PrintToString(failure);
}

// The end of the only start closes what is open.
TEST(ExtendedLayerMissing, ASocketEndsWithTheCallThatMadeIt) {
    const int before = ThisProcess::OpenDescriptors();
    const XtPtr socket = OwnStream();
    EXPECT_EQ(ThisProcess::OpenDescriptors(), before);
    EXPECT_TRUE(socket->IsValid());
    ExpectNotStarted(FailureOf([&] { socket->Send("x", 1); }), XtSendFailed(10093, NotStarted),
                     XtSendFailed(10038, NoSocket));
    ExpectNotStarted(FailureOf([&] { socket->Close(); }), CloseFailed("", 10093, NotStarted),
                     CloseFailed("", 10038, NoSocket));
    EXPECT_EQ(FailureOf([&] { socket->Bind("127.0.0.1", "0"); }),
              BindFailed("127.0.0.1 : 0", "::bind", 10038, NoSocket));
}

TEST(ExtendedLayerMissing, OperationsLeaveTheStartOfTheLayerAlone) {
    const int before = ThisProcess::OpenDescriptors();
    {
        const SocketInitialization layer;
        const XtPtr listener = OwnStream();
        listener->Bind(VelNet::SPECIAL_LOOPBACK, "0");
        EXPECT_NE(FailureOf([&] { listener->Bind(UnresolvableHost().c_str(), "0"); }).code, 0);
        EXPECT_NE(FailureOf([&] { Accept(*listener); }).code, 0);
        listener->Listen();
        const XtPtr client = OwnStream();
        client->Connect(VelNet::SPECIAL_LOOPBACK, PortOf(*listener).c_str());
        ExpectExchange(*client, *Accept(*listener).socket);
    }
    EXPECT_EQ(FailureOf([] { CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP); }).code,
              10093);
    EXPECT_EQ(ThisProcess::OpenDescriptors(), before);
}

TEST(ExtendedLayerMissing, TheEndOfTheLayerClosesWhatIsStillOpen) {
    auto layer = std::make_unique<SocketInitialization>();
    const int before = ThisProcess::OpenDescriptors();
    const XtPtr socket = OwnStream();
    EXPECT_EQ(ThisProcess::OpenDescriptors(), before + 1);
    layer.reset();
    EXPECT_EQ(ThisProcess::OpenDescriptors(), before);
}

}  // namespace
}  // namespace Loopback

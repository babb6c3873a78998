// A socket that one thread closes while another waits in an operation on it.
#include <loopback/ExtendedTest.h>
#include <support/WaitingCall.h>
#include <support/Wine.h>

#include <functional>
#include <string>
#include <string_view>

namespace Loopback {
namespace {

// How a failure ends: its number, the number's text, its code.
struct Ending {
    int number;
    std::u16string_view text;
    int code;
};
constexpr Ending Interrupted = {10004, u"Interrupted function call", 10004};
// Wine's endings in its stead.
constexpr Ending AbortedOnWine = {995, u"Unknown error", -1};
constexpr Ending InvalidOnWine = {10022, u"Invalid argument", 10022};

using FailureOfNumber = std::function<Failure(int, std::u16string_view)>;

Failure With(const Ending& ending, const FailureOfNumber& failure) {
    return {failure(ending.number, ending.text).text, ending.code};
}

void ExpectInterrupted(const Failure& failure, const FailureOfNumber& expected,
                       const Ending& onWine) {
    if (Support::RunsOnWine() && failure == With(onWine, expected)) return;
    EXPECT_EQ(failure, With(Interrupted, expected));
}

Failure ClassicAcceptFailed(int number, std::u16string_view numberText) {
    return SystemFailure(u"VelNet::SocketAPI::Accept() - FAIL. Cannot accept a connection", number,
                         numberText);
}

Failure ClassicSendFailed(int number, std::u16string_view numberText) {
    return SystemFailure(u"VelNet::SocketImpl::Send() - FAIL. The ::send failed", number,
                         numberText);
}

using WaitingOperation = Support::WaitingCall<Failure>;

// Closes the socket under the operation that waits on it.
Failure FailureWhenClosed(VelNet::Socket& socket, const std::function<void()>& operation) {
    WaitingOperation waiting([&] { return FailureOf(operation); });
    socket.Close();
    return waiting.Finish();
}

using Closing = LoopbackTest;

TEST_F(Closing, EndsAnAcceptThatWaits) {
    const SocketPtr listener = Listening();
    VelNet::SocketAddress peer;
    ExpectInterrupted(FailureWhenClosed(*listener, [&] { listener->Accept(peer); }),
                      ClassicAcceptFailed, AbortedOnWine);
}

TEST_F(Closing, EndsAReceiveThatWaits) {
    const Connection connection = Connected();
    char byte = 0;
    ExpectInterrupted(
        FailureWhenClosed(*connection.client, [&] { connection.client->Receive(&byte, 1); }),
        ReceiveFailed, InvalidOnWine);
    EXPECT_EQ(FailureOfReceive(*connection.server), ConnectionClosed());
}

TEST_F(Closing, EndsASendThatWaits) {
    if (Support::RunsOnWine()) GTEST_SKIP() << "Wine lets the send wait";
    const Connection connection = Connected();
    const std::string much(32U << 20U, 'x');
    const Failure failure = FailureWhenClosed(*connection.client, [&] {
        connection.client->Send(much.data(), static_cast<int>(much.size()));
    });
    EXPECT_EQ(failure, With(Interrupted, ClassicSendFailed));
}

TEST_F(Closing, LeavesAClosedSocketBehind) {
    const SocketPtr listener = Listening();
    VelNet::SocketAddress peer;
    FailureWhenClosed(*listener, [&] { listener->Accept(peer); });
    EXPECT_FALSE(listener->IsValid());
    EXPECT_EQ(listener->GetStatus(), VelNet::STATUS_NONE);
}

TEST_F(Closing, GivesAListenersPortBackAtOnce) {
    const SocketPtr listener = Listening();
    const unsigned short port = PortOf(*listener);
    VelNet::SocketAddress peer;
    WaitingOperation waiting([&] { return FailureOf([&] { listener->Accept(peer); }); });
    listener->Close();
    // Wine keeps it as long as the call lasts.
    if (Support::RunsOnWine()) waiting.Finish();
    const SocketPtr next = ListeningOn(LocalHost(), port);
    const Connection connection = ConnectedThrough(*next);
    ExpectExchange(*connection.client, *connection.server);
}

class ClosingExtended : public ExtendedTest {};

TEST_P(ClosingExtended, EndsAnAcceptThatWaits) {
    const XtPtr listener = ListeningXt(GetParam());
    XtPtr socket;
    ReturnString host;
    ReturnString port;
    const auto failed = [](int number, std::u16string_view numberText) {
        return AcceptFailed(Host() + std::string(" : 0"), number, numberText);
    };
    ExpectInterrupted(FailureWhenClosed(*listener, [&] { listener->Accept(socket, host, port); }),
                      failed, AbortedOnWine);
}

TEST_P(ClosingExtended, EndsARecvFromThatWaits) {
    const XtPtr socket = Bound(Datagrams());
    char byte = 0;
    ReturnString host;
    ReturnString port;
    ExpectInterrupted(FailureWhenClosed(*socket, [&] { socket->RecvFrom(&byte, 1, host, port); }),
                      RecvFromFailed, InvalidOnWine);
}

TEST_P(ClosingExtended, EndsAReceiveThatWaits) {
    const XtPtr listener = ListeningXt(GetParam());
    const XtConnection connection = ConnectedThrough(*listener);
    char byte = 0;
    const auto failed = [](int number, std::u16string_view numberText) {
        return XtReceiveFailed(number, numberText);
    };
    ExpectInterrupted(
        FailureWhenClosed(*connection.server, [&] { connection.server->Receive(&byte, 1); }),
        failed, InvalidOnWine);
}

INSTANTIATE_TEST_SUITE_P(Versions, ClosingExtended, testing::Values(Ipv4, Ipv6), NameOfVersion);

}  // namespace
}  // namespace Loopback

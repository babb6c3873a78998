// What a connect call that failed leaves behind, and one whose outcome nobody has asked for.
#include "Provocation.h"
#include "Scene.h"
#include "SelectScene.h"
#include "WineAnswers.h"

namespace Conformance {
namespace {

void ConnectInVain(const OwnedSocket& socket) {
    const OwnedSocket nobody = NewBoundStream();
    ASSERT_TRUE(FailsWith(10061, Connect(socket, LocalAddress(nobody))));
}

// The outcome shows in the set of exceptions.
void ConnectInVainWithoutBlocking(const OwnedSocket& socket) {
    SetNonBlocking(socket);
    const OwnedSocket nobody = NewBoundStream();
    ASSERT_TRUE(FailsWith(10035, Connect(socket, LocalAddress(nobody))));
    Winsock::HandleSet failed = SetOf({socket.Get()});
    ASSERT_EQ(Winsock::select(0, nullptr, nullptr, &failed, &Minute), 1);
    SetNonBlocking(socket, false);
}

// With a connect call that waits for its outcome, and with one that does not.
class FailedConnect : public testing::WithParamInterface<bool>, public Started {
protected:
    static void Fail(const OwnedSocket& socket) {
        GetParam() ? ConnectInVain(socket) : ConnectInVainWithoutBlocking(socket);
    }
};

TEST_P(FailedConnect, LeavesTheSocketBound) {
    const OwnedSocket socket = NewStream();
    Fail(socket);
    EXPECT_NE(LocalPort(socket), 0U);
    EXPECT_TRUE(FailsWith(10022, Bind(socket, Loopback(0))));
}

TEST_P(FailedConnect, LeavesABoundSocketItsPort) {
    const OwnedSocket socket = NewBoundStream();
    const Winsock::AddressIpv4 address = LocalAddress(socket);
    Fail(socket);
    EXPECT_EQ(LocalPort(socket), PortOf(address));
    EXPECT_TRUE(FailsWith(10048, Bind(NewStream(), address)));
}

TEST_P(FailedConnect, CanBeFollowedByListeningOnTheSamePort) {
    if (WineGivesNoAnswer("using a stream after a refusal")) GTEST_SKIP() << "Wine gives no answer";
    for (const bool bound : {false, true}) {
        const OwnedSocket socket = bound ? NewBoundStream() : NewStream();
        Fail(socket);
        const unsigned int port = LocalPort(socket);
        ASSERT_TRUE(Succeeds(Winsock::listen(socket.Get(), 5)));
        EXPECT_EQ(LocalPort(socket), port);
        EXPECT_TRUE(Succeeds(Connect(NewStream(), Loopback(port))));
    }
}

TEST_P(FailedConnect, CanBeFollowedByOneThatSucceedsFromTheSamePort) {
    if (WineGivesNoAnswer("using a stream after a refusal")) GTEST_SKIP() << "Wine gives no answer";
    const OwnedSocket listener = NewListener();
    for (const bool bound : {false, true}) {
        const OwnedSocket socket = bound ? NewBoundStream() : NewStream();
        Fail(socket);
        const unsigned int port = LocalPort(socket);
        ASSERT_TRUE(Succeeds(Connect(socket, LocalAddress(listener))));
        EXPECT_EQ(LocalPort(socket), port);
        const OwnedSocket server = Accept(listener);
        EXPECT_TRUE(Succeeds(Send(socket, "at last"), 7));
        EXPECT_EQ(Receive(server), "at last");
    }
}

INSTANTIATE_TEST_SUITE_P(AtOnceAndLater, FailedConnect, testing::Bool());

using FailedConnectUnasked = Started;

// Connected, as its server knows, but nobody has asked the socket yet.
TEST_F(FailedConnectUnasked, IsAConnectionWhateverIsAskedFirst) {
    const OwnedSocket listener = NewListener();
    const Winsock::AddressIpv4 address = LocalAddress(listener);
    for (const Winsock::AddressIpv4& other :
         {Ipv4(0, 0, 0, 0, PortOf(address)), Loopback(0), address}) {
        const OwnedSocket socket = NewStream();
        SetNonBlocking(socket);
        ASSERT_TRUE(FailsWith(10035, Connect(socket, address)));
        const OwnedSocket server = Accept(listener);
        EXPECT_TRUE(FailsWith(10056, Connect(socket, other)));
        EXPECT_TRUE(FailsWith(10056, Connect(socket, other)));
    }
}

TEST_F(FailedConnectUnasked, CannotListen) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket socket = NewStream();
    SetNonBlocking(socket);
    ASSERT_TRUE(FailsWith(10035, Connect(socket, LocalAddress(listener))));
    const OwnedSocket server = Accept(listener);
    EXPECT_TRUE(
        FailsWith(10056, Winsock::listen(socket.Get(), 5), "listening on what cannot listen"));
}

using FailedConnectAddress = Started;

TEST_F(FailedConnectAddress, OfTheLinkWithoutTheLinkIsNoAddress) {
    Winsock::AddressIpv6 address = LoopbackIpv6(9);
    address.address[0] = 0xFE;
    address.address[1] = 0x80;
    EXPECT_TRUE(
        FailsWith(10049, Connect(NewStream(23), address), "connecting to an address of no link"));
}

}  // namespace
}  // namespace Conformance

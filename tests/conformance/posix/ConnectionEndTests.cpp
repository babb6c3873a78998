// Ends of connections that the system tells once, to whoever asks first.
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

#include "conformance/Provocation.h"
#include "conformance/Scene.h"
#include "conformance/SelectScene.h"

namespace Conformance {
namespace {

int Number(const OwnedSocket& socket) {
    return static_cast<int>(socket.Get());
}

// As a thread does that sends on the socket at that moment.
int TakeReport(const OwnedSocket& socket) {
    int error = 0;
    socklen_t length = sizeof error;
    ::getsockopt(Number(socket), SOL_SOCKET, SO_ERROR, &error, &length);
    return error;
}

void ExpectResetForEver(const OwnedSocket& socket) {
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket)));
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket)));
    EXPECT_TRUE(FailsWith(10054, Send(socket, "x")));
    EXPECT_TRUE(FailsWith(10054, Send(socket, "x")));
}

class ConnectionEndDuringSend : public testing::WithParamInterface<unsigned int>, public Started {};

TEST_P(ConnectionEndDuringSend, LeavesTheCountOfThePartAndIsToldByAllLaterCalls) {
    const OwnedSocket listener = NewListener();
    RawPeer peer = RawPeer::ConnectedTo(LocalPort(listener));
    const OwnedSocket socket = Accept(listener);
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionSendTimeout, GetParam())));
    std::thread reader([&] {
        peer.Receive(65536);
        peer.Reset();
    });
    const std::string block(64U << 20U, 'x');
    const int sent = Send(socket, block);
    reader.join();
    EXPECT_GE(sent, 65536);
    EXPECT_LT(sent, static_cast<int>(block.size()));
    ExpectResetForEver(socket);
}

INSTANTIATE_TEST_SUITE_P(WithoutAndWithTimeout, ConnectionEndDuringSend,
                         testing::Values(0U, 60'000U));

class ConnectionEndReportTaken : public testing::WithParamInterface<unsigned int>,
                                 public Started {};

TEST_P(ConnectionEndReportTaken, AResetIsNoOrderlyEndToTheReceiver) {
    const OwnedSocket listener = NewListener();
    RawPeer peer = RawPeer::ConnectedTo(LocalPort(listener));
    const OwnedSocket socket = Accept(listener);
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReceiveTimeout, GetParam())));
    peer.Reset();
    AwaitEnd(socket.Get());
    ASSERT_EQ(TakeReport(socket), ECONNRESET);
    ExpectResetForEver(socket);
}

TEST_P(ConnectionEndReportTaken, AResetIsNoAbortToTheSender) {
    const OwnedSocket listener = NewListener();
    RawPeer peer = RawPeer::ConnectedTo(LocalPort(listener));
    const OwnedSocket socket = Accept(listener);
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionSendTimeout, GetParam())));
    peer.Send("unread");
    peer.Reset();
    AwaitEnd(socket.Get());
    ASSERT_EQ(TakeReport(socket), ECONNRESET);
    EXPECT_TRUE(FailsWith(10054, Send(socket, "x")));
    EXPECT_EQ(Receive(socket), "unread");
    ExpectResetForEver(socket);
}

TEST_P(ConnectionEndReportTaken, AResetIsNoOrderlyEndThoughTheOwnHalfWasEnded) {
    const OwnedSocket listener = NewListener();
    RawPeer peer = RawPeer::ConnectedTo(LocalPort(listener));
    const OwnedSocket socket = Accept(listener);
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReceiveTimeout, GetParam())));
    EndSending(socket.Get());
    peer.Reset();
    AwaitEnd(socket.Get());
    ASSERT_EQ(TakeReport(socket), ECONNRESET);
    ExpectResetForEver(socket);
}

INSTANTIATE_TEST_SUITE_P(WithoutAndWithTimeout, ConnectionEndReportTaken,
                         testing::Values(0U, 60'000U));

using ConnectionEndBetweenThreads = Started;

// The kernel tells one of the two, and pretends an orderly end to the other.
TEST_F(ConnectionEndBetweenThreads, IsTheSameResetToBothAndHidesNoData) {
    const OwnedSocket listener = NewListener();
    for (int round = 0; round < 300; ++round) {
        RawPeer peer = RawPeer::ConnectedTo(LocalPort(listener));
        const OwnedSocket socket = Accept(listener);
        std::thread sender([&socket] {
            int sent = 0;
            while (sent >= 0)
                sent = Send(socket, "x");
            EXPECT_TRUE(FailsWith(10054, sent));
        });
        std::thread receiver([&socket] {
            std::string received;
            while (received.size() < 4)
                received += Receive(socket);
            EXPECT_EQ(received, "last");
            EXPECT_TRUE(FailsWith(10054, TryReceive(socket)));
        });
        peer.Send("last");
        peer.Reset();
        sender.join();
        receiver.join();
        ExpectResetForEver(socket);
    }
}

// What has come is given all the same. Winsock's own answer to this is not certain.
class ConnectionEndWithUnreadData : public testing::WithParamInterface<unsigned int>,
                                    public Started {
protected:
    void SetUp() override {
        Started::SetUp();
        const OwnedSocket listener = NewListener();
        peer = RawPeer::ConnectedTo(LocalPort(listener));
        socket = Accept(listener);
        ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReceiveTimeout, GetParam())));
    }
    void TearDown() override {
        socket.Close();
        Started::TearDown();
    }
    void Reset() {
        peer.Send("last");
        peer.Reset();
        AwaitEnd(socket.Get());
    }
    RawPeer peer;
    OwnedSocket socket;
};

INSTANTIATE_TEST_SUITE_P(WithoutAndWithTimeout, ConnectionEndWithUnreadData,
                         testing::Values(0U, 60'000U));

TEST_P(ConnectionEndWithUnreadData, GivesThemAndThenTheResetAsTheCountSays) {
    Reset();
    EXPECT_TRUE(FailsWith(10054, Send(socket, "x")));
    EXPECT_TRUE(FailsWith(10054, Send(socket, "x")));
    EXPECT_EQ(BytesAvailable(socket), 4U);
    EXPECT_EQ(ReadyFor(socket), "rw");
    EXPECT_EQ(Receive(socket, 3), "las");
    EXPECT_EQ(BytesAvailable(socket), 1U);
    EXPECT_EQ(Receive(socket), "t");
    EXPECT_EQ(BytesAvailable(socket), 0U);
    ExpectResetForEver(socket);
    EXPECT_EQ(ReadyFor(socket), "rw");
}

TEST_P(ConnectionEndWithUnreadData, GivesThemToANonBlockingSocket) {
    SetNonBlocking(socket);
    Reset();
    EXPECT_TRUE(FailsWith(10054, Send(socket, "x")));
    EXPECT_EQ(Receive(socket), "last");
    ExpectResetForEver(socket);
}

TEST_P(ConnectionEndWithUnreadData, ReceivesNothingIntoNoRoomUntilTheyAreGiven) {
    Reset();
    EXPECT_TRUE(Succeeds(TryReceive(socket, 0), 0));
    EXPECT_TRUE(FailsWith(10054, Send(socket, "x")));
    EXPECT_TRUE(Succeeds(TryReceive(socket, 0), 0));
    EXPECT_EQ(Receive(socket), "last");
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket, 0)));
    ExpectResetForEver(socket);
}

TEST_P(ConnectionEndWithUnreadData, RefusesANullBufferAndKeepsThem) {
    Reset();
    EXPECT_TRUE(FailsWith(10054, Send(socket, "x")));
    EXPECT_TRUE(FailsWith(10014, Winsock::recv(socket.Get(), nullptr, 4, 0)));
    EXPECT_EQ(Receive(socket), "last");
    ExpectResetForEver(socket);
}

TEST_P(ConnectionEndWithUnreadData, GivesThemThoughTheOwnHalfWasEnded) {
    EndSending(socket.Get());
    Reset();
    EXPECT_EQ(Receive(socket), "last");
    ExpectResetForEver(socket);
}

// Connected, as the server knows, and reset before the client has asked for the outcome.
class ConnectionEndBeforeTheOutcome : public Started {
protected:
    void SetUp() override {
        Started::SetUp();
        const OwnedSocket listener = NewListener();
        address_ = LocalAddress(listener);
        socket_ = NewStream();
        SetNonBlocking(socket_);
        ASSERT_TRUE(FailsWith(10035, Connect(socket_, address_)));
        server_ = RawPeer(::accept(Number(listener), nullptr, nullptr));
        ASSERT_GE(server_.Descriptor(), 0);
    }
    void TearDown() override {
        socket_.Close();
        Started::TearDown();
    }
    void Reset() {
        server_.Reset();
        AwaitEnd(socket_.Get());
    }
    Winsock::AddressIpv4 address_ = {};
    RawPeer server_;
    OwnedSocket socket_;
};

TEST_F(ConnectionEndBeforeTheOutcome, IsAResetToTransfers) {
    Reset();
    ExpectResetForEver(socket_);
}

TEST_F(ConnectionEndBeforeTheOutcome, IsAConnectedSocketToConnect) {
    Reset();
    EXPECT_TRUE(FailsWith(10056, Connect(socket_, address_)));
    ExpectResetForEver(socket_);
}

TEST_F(ConnectionEndBeforeTheOutcome, HasNoBytesAndTheQuestionSucceeds) {
    Reset();
    EXPECT_EQ(BytesAvailable(socket_), 0U);
    ExpectResetForEver(socket_);
}

TEST_F(ConnectionEndBeforeTheOutcome, ComesBehindTheDataThatHadCome) {
    server_.Send("hello");
    Reset();
    EXPECT_EQ(BytesAvailable(socket_), 5U);
    EXPECT_TRUE(FailsWith(10054, Send(socket_, "x")));
    EXPECT_EQ(Receive(socket_), "hello");
    EXPECT_EQ(BytesAvailable(socket_), 0U);
    ExpectResetForEver(socket_);
}

using ConnectionEndOfAnUnfinishedConnect = Started;

TEST_F(ConnectionEndOfAnUnfinishedConnect, IsBegunAnewThoughATransferMetTheRefusal) {
    const OwnedSocket target = NewListener();
    const OwnedSocket socket = NewStream();
    SetNonBlocking(socket);
    const unsigned int nobodysPort = LocalPort(NewBoundStream());
    ASSERT_TRUE(FailsWith(10035, Connect(socket, Loopback(nobodysPort))));
    AwaitEnd(socket.Get());
    EXPECT_TRUE(FailsWith(10057, TryReceive(socket)));
    EXPECT_TRUE(FailsWith(10057, Send(socket, "x")));
    EXPECT_TRUE(FailsWith(10035, Connect(socket, LocalAddress(target))));
    EXPECT_TRUE(FailsWith(
        10056, RepeatWhile(10037, [&] { return Connect(socket, LocalAddress(target)); })));
    EXPECT_TRUE(Succeeds(Send(socket, "x"), 1));
}

using ConnectionEndOtherFailure = Started;

TEST_F(ConnectionEndOtherFailure, ThatDoesNotEndTheConnectionIsNotRemembered) {
    const Pair pair = NewConnectedPair();
    const int kept = ::fcntl(Number(pair.client), F_DUPFD_CLOEXEC, 3);
    ASSERT_GE(kept, 0);
    ::close(Number(pair.client));
    EXPECT_TRUE(FailsWith(10038, Send(pair.client, "x")));
    EXPECT_TRUE(FailsWith(10038, TryReceive(pair.client)));
    ASSERT_EQ(::dup2(kept, Number(pair.client)), Number(pair.client));
    ::close(kept);
    ASSERT_TRUE(Succeeds(Send(pair.client, "still here"), 10));
    EXPECT_EQ(Receive(pair.server), "still here");
}

}  // namespace
}  // namespace Conformance

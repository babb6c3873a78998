// Ends of connections that come before all is received, or after one side has ended its half.
#include "Provocation.h"
#include "Scene.h"
#include "SelectScene.h"

namespace Conformance {
namespace {

// A socket whose peer is not the library's. Both directions have time-outs that never pass, or
// none.
class StreamEnd : public testing::WithParamInterface<unsigned int>, public Started {
protected:
    void SetUp() override {
        Started::SetUp();
        const OwnedSocket listener = NewListener();
        peer = RawPeer::ConnectedTo(LocalPort(listener));
        socket = Accept(listener);
        ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReceiveTimeout, GetParam())));
        ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionSendTimeout, GetParam())));
    }
    void TearDown() override {
        socket.Close();
        peer.Close();
        Started::TearDown();
    }

    RawPeer peer;
    OwnedSocket socket;
};

INSTANTIATE_TEST_SUITE_P(WithoutAndWithTimeout, StreamEnd, testing::Values(0U, 60'000U));

TEST_P(StreamEnd, ThatASendMetFirstComesBehindTheDataThatHadCome) {
    peer.Send("last");
    peer.Close();
    ASSERT_TRUE(IsReadable(socket));
    ASSERT_TRUE(Succeeds(Send(socket, "late"), 4));
    AwaitEnd(socket.Get());
    EXPECT_TRUE(FailsWith(10053, Send(socket, "later"), "sending to a closed peer"));
    EXPECT_EQ(BytesAvailable(socket), 4U);
    EXPECT_EQ(ReadyFor(socket), "rw");
    EXPECT_TRUE(Succeeds(TryReceive(socket, 0), 0));
    EXPECT_EQ(Receive(socket, 2), "la");
    EXPECT_EQ(BytesAvailable(socket), 2U);
    EXPECT_EQ(Receive(socket), "st");
    EXPECT_EQ(BytesAvailable(socket), 0U);
    EXPECT_TRUE(FailsWith(10053, TryReceive(socket), "receiving after a refused send"));
    EXPECT_TRUE(FailsWith(10053, TryReceive(socket, 0), "receiving after a refused send"));
    EXPECT_EQ(ReadyFor(socket), "rw");
}

TEST_P(StreamEnd, IsOrderlyAfterTheOwnHalfWasEnded) {
    EndSending(socket.Get());
    EXPECT_EQ(peer.ReceiveAll(), 0U);
    peer.Send("answer");
    peer.Close();
    AwaitEnd(socket.Get());
    EXPECT_EQ(Receive(socket), "answer");
    EXPECT_TRUE(Succeeds(TryReceive(socket), 0));
    EXPECT_TRUE(Succeeds(TryReceive(socket), 0));
    EXPECT_EQ(BytesAvailable(socket), 0U);
}

TEST_P(StreamEnd, IsOrderlyBeforeTheOwnHalfWasEnded) {
    peer.Send("answer");
    peer.Close();
    ASSERT_TRUE(IsReadable(socket));
    EndSending(socket.Get());
    AwaitEnd(socket.Get());
    EXPECT_EQ(Receive(socket), "answer");
    EXPECT_TRUE(Succeeds(TryReceive(socket), 0));
    EXPECT_TRUE(Succeeds(TryReceive(socket), 0));
}

TEST_P(StreamEnd, OfTheOwnHalfRefusesToSendAndLeavesThePeersHalfOpen) {
    EndSending(socket.Get());
    EXPECT_TRUE(FailsWith(10058, Send(socket, "more")));
    EXPECT_TRUE(FailsWith(10058, Send(socket, "more")));
    peer.Send("answer");
    EXPECT_EQ(Receive(socket), "answer");
    peer.Close();
    EXPECT_TRUE(Succeeds(TryReceive(socket), 0));
}

}  // namespace
}  // namespace Conformance

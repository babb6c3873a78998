// Ends of connections that come before all is received, or after one side has ended its half.
#include "Provocation.h"
#include "Scene.h"
#include "SelectScene.h"

namespace Conformance {
namespace {

// A socket whose peer is not the library's. Both directions have timeouts that never pass, or
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

// Of either side of a connection.
TEST_P(StreamEnd, OfBothHalvesIsOrderlyWhateverIsSentThereafter) {
    for (const bool accepted : {true, false}) {
        Pair pair = NewConnectedPair();
        const OwnedSocket& one = accepted ? pair.server : pair.client;
        OwnedSocket& other = accepted ? pair.client : pair.server;
        ASSERT_TRUE(Succeeds(SetOption(one, Winsock::OptionSendTimeout, GetParam())));
        ASSERT_TRUE(Succeeds(Send(one, "question"), 8));
        EndSending(one.Get());
        ASSERT_EQ(Receive(other), "question");
        ASSERT_TRUE(Succeeds(Send(other, "answer"), 6));
        other.Close();
        AwaitEnd(one.Get());
        EXPECT_TRUE(FailsWith(10058, Send(one, "more")));
        EXPECT_EQ(Receive(one), "answer");
        EXPECT_TRUE(Succeeds(TryReceive(one), 0));
        EXPECT_TRUE(FailsWith(10058, Send(one, "more")));
        EXPECT_TRUE(Succeeds(TryReceive(one), 0));
    }
}

// The peer will never read what it has not read yet.
TEST_P(StreamEnd, OfAPeerThatThrowsDataAwayIsAnAbort) {
    for (const bool accepted : {true, false}) {
        Pair pair = NewConnectedPair();
        const OwnedSocket& one = accepted ? pair.server : pair.client;
        OwnedSocket& other = accepted ? pair.client : pair.server;
        ASSERT_TRUE(Succeeds(SetOption(one, Winsock::OptionSendTimeout, GetParam())));
        ASSERT_TRUE(Succeeds(Send(one, "unread"), 6));
        AwaitReadable(other.Get());
        ASSERT_TRUE(Succeeds(Send(other, "bye"), 3));
        EndSending(other.Get());
        ASSERT_TRUE(IsReadable(one));
        other.Close();
        AwaitEnd(one.Get());
        EXPECT_TRUE(FailsWith(10053, Send(one, "more"), "sending to a closed peer"));
        EXPECT_EQ(Receive(one), "bye");
        EXPECT_TRUE(FailsWith(10053, TryReceive(one), "receiving after a refused send"));
        EXPECT_TRUE(FailsWith(10053, Send(one, "more"), "sending to a closed peer"));
    }
}

}  // namespace
}  // namespace Conformance

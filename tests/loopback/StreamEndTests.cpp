// Ends of connections that come before all is received, or after one side has ended its half.
#include <VelNet/SocketCollection.h>
#include <loopback/ExtendedTest.h>
#include <loopback/RawConnection.h>
#include <support/RawPeer.h>
#include <support/Wine.h>

#include <memory>
#include <optional>
#include <vector>

namespace Loopback {
namespace {

using VelNet::EVENT_CLOSE;
using VelNet::EVENT_READ;
using VelNet::SocketCollection;

struct CollectionEnder {
    void operator()(SocketCollection* collection) const { collection->Destroy(); }
};
using CollectionPtr = std::unique_ptr<SocketCollection, CollectionEnder>;

// Which of the events of a readable socket come now.
std::vector<int> EventsOf(VelNet::Socket& socket) {
    const CollectionPtr all(VelNet::CreateSocketCollection());
    all->Add(&socket, EVENT_READ);
    all->Add(&socket, EVENT_CLOSE);
    const CollectionPtr ready(all->Select(0));
    std::vector<int> events;
    for (unsigned int index = 0; ready && index < ready->GetCount(); ++index) {
        events.push_back(ready->GetEvent(index));
    }
    return events;
}

void ExpectBytes(VelNet::Socket& socket) {
    EXPECT_EQ(socket.GetStatus(), VelNet::STATUS_DATA_PENDING);
    EXPECT_EQ(EventsOf(socket), std::vector<int>{EVENT_READ});
}

void ExpectEnd(VelNet::Socket& socket) {
    EXPECT_FALSE(socket.IsDataAvailable());
    EXPECT_EQ(socket.GetStatus(), VelNet::STATUS_IDLE);
    EXPECT_EQ(EventsOf(socket), std::vector<int>{EVENT_CLOSE});
}

// Sends until the system has learnt that nobody receives.
Failure FailureOfSending(VelNet::Socket& socket) {
    Failure failure;
    EXPECT_TRUE(Eventually([&] {
        failure = FailureOf([&] { socket.Send("x", 1); });
        return failure.code != 0;
    }));
    return failure;
}

class StreamEnd : public LoopbackTest {
protected:
    StreamEnd()
        : listener_(Listening()),
          peer(std::in_place, PortOf(*listener_)),
          server(Accepted(*listener_)) {}

private:
    SocketPtr listener_;

protected:
    std::optional<RawConnection> peer;
    SocketPtr server;
};

TEST_F(StreamEnd, ThatASendMetFirstComesBehindWhatThePeerHadSent) {
    peer->Send("last words");
    peer.reset();
    const int number = FailureOfSending(*server).code;
    EXPECT_TRUE(number == 10053 || (Support::RunsOnWine() && number == 10054)) << number;
    ExpectBytes(*server);
    EXPECT_EQ(ReceiveExactly(*server, 4), "last");
    ExpectBytes(*server);
    EXPECT_EQ(ReceiveExactly(*server, 6), " words");
    ExpectEnd(*server);
    const Failure end = FailureOfReceive(*server);
    EXPECT_TRUE(end == ReceiveFailed(10053, u"Software caused connection abort") ||
                (Support::RunsOnWine() && end == ConnectionClosed()))
        << testing::PrintToString(end);
    ExpectEnd(*server);
}

// Windows may take back what was not received: then there is no sign of it either.
TEST_F(StreamEnd, OfAResetPromisesNoMoreThanIsGiven) {
    peer->Send("last words");
    EXPECT_TRUE(Eventually([&] { return server->IsDataAvailable(); }));
    peer->Reset();
    EXPECT_EQ(FailureOfSending(*server).code, 10054);
    if (server->IsDataAvailable()) {
        ExpectBytes(*server);
        EXPECT_EQ(ReceiveExactly(*server, 10), "last words");
    }
    ExpectEnd(*server);
    const Failure end = FailureOfReceive(*server);
    EXPECT_TRUE(end == ReceiveFailed(10054, u"Connection reset by peer") ||
                (Support::RunsOnWine() && end == ConnectionClosed()))
        << testing::PrintToString(end);
    ExpectEnd(*server);
}

// The system's handle lets a program end its half of a connection.
class StreamEndOfAHalf : public ExtendedTest {
protected:
    void ExpectOrderlyEnd(const XtConnection& connection) {
        const Failure closed = XtConnectionClosed(ComputerName(), "0");
        EXPECT_EQ(ReceiveExactly(*connection.client, 6), "answer");
        for (int round = 0; round < 3; ++round) {
            EXPECT_EQ(FailureOfReceive(*connection.client), closed);
            EXPECT_EQ(FailureOf([&] { connection.client->Send("x", 1); }).code, 10058);
        }
        ExpectEnd(*connection.client);
    }
};

INSTANTIATE_TEST_SUITE_P(Versions, StreamEndOfAHalf, testing::Values(Ipv4, Ipv6), NameOfVersion);

TEST_P(StreamEndOfAHalf, LeavesThePeersOrderlyEndAnOrderlyOne) {
    const XtConnection connection = Connected();
    SendAll(*connection.client, "question");
    Support::EndSending(connection.client->GetHandle());
    EXPECT_EQ(ReceiveExactly(*connection.server, 8), "question");
    EXPECT_EQ(FailureOfReceive(*connection.server), XtConnectionClosed("", ""));
    SendAll(*connection.server, "answer");
    connection.server->Close();
    ExpectOrderlyEnd(connection);
}

TEST_P(StreamEndOfAHalf, AfterThePeersLeavesThatAnOrderlyOne) {
    const XtConnection connection = Connected();
    SendAll(*connection.server, "answer");
    connection.server->Close();
    EXPECT_TRUE(Eventually([&] { return connection.client->IsDataAvailable(); }));
    Support::EndSending(connection.client->GetHandle());
    ExpectOrderlyEnd(connection);
}

TEST_P(StreamEndOfAHalf, RefusesToSendAndGoesOnReceiving) {
    const XtConnection connection = Connected();
    Support::EndSending(connection.client->GetHandle());
    EXPECT_EQ(FailureOf([&] { connection.client->Send("x", 1); }).code, 10058);
    SendAll(*connection.server, "answer");
    connection.server->Close();
    ExpectOrderlyEnd(connection);
}

}  // namespace
}  // namespace Loopback

// Sockets that are waited on together, for real.
#include <VelNet/SocketCollection.h>
#include <loopback/ExtendedTest.h>
#include <loopback/RawConnection.h>
#include <loopback/ThisProcess.h>

#include <future>
#include <memory>
#include <ostream>
#include <utility>
#include <vector>

namespace Loopback {
namespace {

using VelNet::EVENT_ACCEPT;
using VelNet::EVENT_CLOSE;
using VelNet::EVENT_READ;
using VelNet::EVENT_WRITE;
using VelNet::SocketCollection;

// Seconds, longer than anything takes that works.
constexpr unsigned int Long = 60;

struct CollectionEnder {
    void operator()(SocketCollection* collection) const { collection->Destroy(); }
};
using CollectionPtr = std::unique_ptr<SocketCollection, CollectionEnder>;

CollectionPtr EmptyCollection() {
    return CollectionPtr(VelNet::CreateSocketCollection());
}

CollectionPtr Select(SocketCollection& collection, unsigned int seconds) {
    return CollectionPtr(collection.Select(seconds));
}

struct Ready {
    const VelNet::Socket* socket;
    int event;

    bool operator==(const Ready&) const = default;
};
void PrintTo(const Ready& ready, std::ostream* stream) {
    *stream << ready.socket << " for " << ready.event;
}
using AllReady = std::vector<Ready>;

AllReady EntriesOf(const SocketCollection& collection) {
    AllReady entries;
    for (unsigned int index = 0; index < collection.GetCount(); ++index) {
        entries.push_back({collection.GetSocket(index).Get(), collection.GetEvent(index)});
    }
    return entries;
}

// What becomes ready within a long time; a row with a null socket if nothing does.
AllReady SelectAll(SocketCollection& collection) {
    const CollectionPtr ready = Select(collection, Long);
    return ready ? EntriesOf(*ready) : AllReady{{nullptr, -1}};
}

class Collection : public LoopbackTest {
protected:
    Collection() : collection_(EmptyCollection()) {}

    SocketCollection& All() { return *collection_; }
    void End() { collection_.reset(); }

private:
    CollectionPtr collection_;
};

TEST_F(Collection, WithNothingToWaitForTheWholeTimePasses) {
    const auto start = Clock::now();
    EXPECT_FALSE(Select(All(), 1));
    EXPECT_GE(Clock::now() - start, std::chrono::seconds(1));

    const Connection connection = Connected();
    All().Add(connection.client.Get(), 4);
    All().Add(connection.client.Get(), -1);
    const auto again = Clock::now();
    EXPECT_FALSE(Select(All(), 1));
    EXPECT_GE(Clock::now() - again, std::chrono::seconds(1));
}

TEST_F(Collection, WithNothingReadyTheWholeTimePasses) {
    const SocketPtr listener = Listening();
    const Connection connection = Connected();
    All().Add(listener.Get(), EVENT_ACCEPT);
    All().Add(connection.client.Get(), EVENT_READ);
    const auto start = Clock::now();
    EXPECT_FALSE(Select(All(), 2));
    EXPECT_GE(Clock::now() - start, std::chrono::seconds(2));
}

TEST_F(Collection, AskingWithoutWaitingGivesNothingAtOnce) {
    const SocketPtr listener = Listening();
    All().Add(listener.Get(), EVENT_ACCEPT);
    EXPECT_FALSE(Select(All(), 0));
    const SocketPtr client = ConnectedTo(*listener);
    EXPECT_TRUE(Eventually([&] { return bool(Select(All(), 0)); }));
    EXPECT_EQ(SelectAll(All()), (AllReady{{listener.Get(), EVENT_ACCEPT}}));
}

TEST_F(Collection, APendingConnectionIsReportedUntilItIsAccepted) {
    const SocketPtr listener = Listening();
    All().Add(listener.Get(), EVENT_ACCEPT);
    const SocketPtr client = ConnectedTo(*listener);
    EXPECT_EQ(SelectAll(All()), (AllReady{{listener.Get(), EVENT_ACCEPT}}));
    EXPECT_EQ(SelectAll(All()), (AllReady{{listener.Get(), EVENT_ACCEPT}}));
    const SocketPtr server = Accepted(*listener);
    EXPECT_FALSE(Select(All(), 0));
}

TEST_F(Collection, AListenerIsNotReadyToRead) {
    const SocketPtr listener = Listening();
    All().Add(listener.Get(), EVENT_READ);
    All().Add(listener.Get(), EVENT_CLOSE);
    const SocketPtr client = ConnectedTo(*listener);
    EXPECT_EQ(SelectAll(All()), AllReady{});
}

TEST_F(Collection, WaitingBytesAreReportedUntilTheyAreRead) {
    const Connection connection = Connected();
    All().Add(connection.server.Get(), EVENT_READ);
    All().Add(connection.server.Get(), EVENT_CLOSE);
    EXPECT_FALSE(Select(All(), 0));
    SendAll(*connection.client, "ab");
    EXPECT_EQ(SelectAll(All()), (AllReady{{connection.server.Get(), EVENT_READ}}));
    EXPECT_EQ(ReceiveExactly(*connection.server, 1), "a");
    EXPECT_EQ(SelectAll(All()), (AllReady{{connection.server.Get(), EVENT_READ}}));
    EXPECT_EQ(ReceiveExactly(*connection.server, 1), "b");
    EXPECT_FALSE(Select(All(), 0));
}

TEST_F(Collection, AWaitEndsWhenBytesCome) {
    const Connection connection = Connected();
    All().Add(connection.server.Get(), EVENT_READ);
    ThisProcess::InterruptedThread thread;
    auto other = std::async(std::launch::async, [&] {
        // Not before this thread sleeps, where the system can tell.
        thread.Interrupt();
        SendAll(*connection.client, "x");
    });
    EXPECT_EQ(SelectAll(All()), (AllReady{{connection.server.Get(), EVENT_READ}}));
    other.get();
}

TEST_F(Collection, ACloseIsReportedWhenAllIsRead) {
    const Connection connection = Connected();
    All().Add(connection.server.Get(), EVENT_CLOSE);
    All().Add(connection.server.Get(), EVENT_READ);
    SendAll(*connection.client, "x");
    connection.client->Close();
    EXPECT_EQ(SelectAll(All()), (AllReady{{connection.server.Get(), EVENT_READ}}));
    EXPECT_EQ(ReceiveExactly(*connection.server, 1), "x");
    EXPECT_EQ(SelectAll(All()), (AllReady{{connection.server.Get(), EVENT_CLOSE}}));
    EXPECT_EQ(FailureOfReceive(*connection.server), ConnectionClosed());
    EXPECT_EQ(SelectAll(All()), (AllReady{{connection.server.Get(), EVENT_CLOSE}}));
}

TEST_F(Collection, AResetIsReportedAsAClose) {
    const SocketPtr listener = Listening();
    RawConnection client(PortOf(*listener));
    const SocketPtr server = Accepted(*listener);
    All().Add(server.Get(), EVENT_READ);
    All().Add(server.Get(), EVENT_CLOSE);
    client.Reset();
    EXPECT_EQ(SelectAll(All()), (AllReady{{server.Get(), EVENT_CLOSE}}));
}

// Sends until the system takes no more.
void Fill(VelNet::Socket& socket, std::size_t& waiting) {
    const std::string bytes(65536, 'x');
    while (const int sent = socket.Send(bytes.data(), 65536)) {
        waiting += static_cast<std::size_t>(sent);
    }
}

TEST_F(Collection, AFullSocketIsNotReadyToWriteUntilThereIsRoom) {
    const Connection connection = Connected();
    EXPECT_TRUE(connection.client->SetNonBlocking());
    All().Add(connection.client.Get(), EVENT_WRITE);
    EXPECT_EQ(SelectAll(All()), (AllReady{{connection.client.Get(), EVENT_WRITE}}));
    std::size_t waiting = 0;
    // Some of what was taken may still be on its way to the peer and make room.
    EXPECT_TRUE(Eventually([&] {
        Fill(*connection.client, waiting);
        return !Select(All(), 0);
    }));
    EXPECT_EQ(ReceiveExactly(*connection.server, waiting).size(), waiting);
    EXPECT_EQ(SelectAll(All()), (AllReady{{connection.client.Get(), EVENT_WRITE}}));
}

TEST_F(Collection, ReadyForBothComesTwiceReadFirst) {
    const Connection connection = Connected();
    All().Add(connection.server.Get(), EVENT_READ);
    All().Add(connection.server.Get(), EVENT_WRITE);
    SendAll(*connection.client, "x");
    EXPECT_TRUE(Eventually([&] { return connection.server->IsDataAvailable(); }));
    EXPECT_EQ(SelectAll(All()), (AllReady{{connection.server.Get(), EVENT_READ},
                                          {connection.server.Get(), EVENT_WRITE}}));
}

TEST_F(Collection, ASocketThatStandsOftenComesOften) {
    const Connection connection = Connected();
    AllReady expected;
    for (int count = 0; count < 100; ++count) {
        All().Add(connection.server.Get(), EVENT_READ);
        expected.push_back({connection.server.Get(), EVENT_READ});
    }
    SendAll(*connection.client, "x");
    EXPECT_EQ(SelectAll(All()), expected);
}

TEST_F(Collection, DatagramsAreReportedOnlyOnAConnectedSocket) {
    const SocketPtr receiver = Bound(DatagramSocket());
    const SocketPtr sender = Bound(DatagramSocket());
    sender->Connect(LocalHost(), PortOf(*receiver));
    All().Add(receiver.Get(), EVENT_READ);
    All().Add(receiver.Get(), EVENT_CLOSE);
    sender->Send("x", 1);
    EXPECT_EQ(SelectAll(All()), AllReady{});
    receiver->Connect(LocalHost(), PortOf(*sender));
    EXPECT_EQ(SelectAll(All()), (AllReady{{receiver.Get(), EVENT_READ}}));
}

TEST_F(Collection, AStreamThatWasNeverConnectedIsNeverReady) {
    const SocketPtr created = StreamSocket();
    const SocketPtr bound = Bound(StreamSocket());
    for (const int event : {EVENT_ACCEPT, EVENT_READ, EVENT_WRITE, EVENT_CLOSE}) {
        All().Add(created.Get(), event);
        All().Add(bound.Get(), event);
    }
    EXPECT_FALSE(Select(All(), 0));
}

// The pairs of a crowd; each server has a byte to read.
std::vector<Connection> Crowd(int count) {
    const SocketPtr listener = Listening();
    std::vector<Connection> pairs;
    for (int number = 0; number < count; ++number) {
        pairs.push_back(ConnectedThrough(*listener));
        SendAll(*pairs.back().client, "x");
    }
    return pairs;
}

bool AllHaveBytes(const std::vector<Connection>& pairs) {
    for (const Connection& pair : pairs) {
        if (!Eventually([&] { return pair.server->IsDataAvailable(); })) return false;
    }
    return true;
}

TEST_F(Collection, SixtyFourSocketsAreWaitedForAndNoMore) {
    const std::vector<Connection> pairs = Crowd(65);
    AllReady expected;
    for (const Connection& pair : pairs) {
        All().Add(pair.server.Get(), EVENT_READ);
        expected.push_back({pair.server.Get(), EVENT_READ});
    }
    ASSERT_TRUE(AllHaveBytes(pairs));
    const Ready last = expected.back();
    expected.pop_back();
    EXPECT_EQ(SelectAll(All()), expected);

    All().Remove(pairs.front().server.Get(), EVENT_READ);
    expected.erase(expected.begin());
    expected.push_back(last);
    EXPECT_EQ(SelectAll(All()), expected);
}

TEST_F(Collection, OfManyTheReadyOnesComeInTheirOrder) {
    const std::vector<Connection> pairs = Crowd(64);
    ASSERT_TRUE(AllHaveBytes(pairs));
    AllReady expected;
    for (auto pair = pairs.rbegin(); pair != pairs.rend(); ++pair) {
        All().Add(pair->server.Get(), EVENT_READ);
        const bool reads = (pair - pairs.rbegin()) % 3 == 0;
        if (reads) ReceiveExactly(*pair->server, 1);
        if (!reads) expected.push_back({pair->server.Get(), EVENT_READ});
    }
    EXPECT_EQ(SelectAll(All()), expected);
}

TEST_F(Collection, AClosedSocketIsAFailureThatChangesNothing) {
    const SocketPtr closed = StreamSocket();
    const Connection connection = Connected();
    All().Add(connection.client.Get(), EVENT_WRITE);
    All().Add(closed.Get(), EVENT_READ);
    closed->Close();
    EnableOnly({Error});
    const Failure failure =
        SystemFailure(u"VelNet::SocketCollection::Select() - FAIL. Socket call ::select failed",
                      10038, u"Socket operation on nonsocket");
    EXPECT_EQ(FailureOf([&] { Select(All(), 0); }), failure);
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    EXPECT_EQ(EntriesOf(All()),
              (AllReady{{connection.client.Get(), EVENT_WRITE}, {closed.Get(), EVENT_READ}}));
    All().Remove(closed.Get(), EVENT_READ);
    EXPECT_EQ(SelectAll(All()), (AllReady{{connection.client.Get(), EVENT_WRITE}}));
}

TEST_F(Collection, EntriesAreFoundAndRemovedByHandleAndEvent) {
    const SocketPtr one = StreamSocket();
    const SocketPtr other = StreamSocket();
    for (const SocketPtr* socket : {&one, &other, &one}) {
        All().Add(socket->Get(), EVENT_READ);
    }
    All().Add(one.Get(), EVENT_WRITE);
    EXPECT_EQ(All().Find(other.Get(), EVENT_READ), 1U);
    EXPECT_EQ(All().Find(one.Get(), EVENT_WRITE), 3U);
    EXPECT_EQ(All().Find(one.Get(), EVENT_CLOSE), 0xFFFFFFFFU);
    All().Remove(one.Get(), EVENT_CLOSE);
    EXPECT_EQ(All().GetCount(), 4U);
    All().Remove(one.Get(), EVENT_READ);
    EXPECT_EQ(EntriesOf(All()), (AllReady{{other.Get(), EVENT_READ}, {one.Get(), EVENT_WRITE}}));
}

TEST_F(Collection, ASocketThatItsOwnerReleasesStaysOpenWhileRegistered) {
    Connection connection = Connected();
    All().Add(connection.server.Get(), EVENT_READ);
    connection.server = SocketPtr();
    SendAll(*connection.client, "x");
    {
        const CollectionPtr ready = Select(All(), Long);
        ASSERT_TRUE(ready);
        ASSERT_EQ(ready->GetCount(), 1U);
        const SocketPtr server = ready->GetSocket(0);
        EXPECT_EQ(ReceiveExactly(*server, 1), "x");
        ExpectExchange(*server, *connection.client);
    }
    End();
    EXPECT_EQ(FailureOfReceive(*connection.client), ConnectionClosed());
}

TEST_F(Collection, WhatIsReadyOutlivesTheCollection) {
    Connection connection = Connected();
    All().Add(connection.server.Get(), EVENT_WRITE);
    connection.server = SocketPtr();
    const CollectionPtr ready = Select(All(), Long);
    End();
    ASSERT_TRUE(ready);
    ASSERT_EQ(ready->GetCount(), 1U);
    EXPECT_EQ(ready->GetEvent(0), EVENT_WRITE);
    ExpectExchange(*ready->GetSocket(0), *connection.client);
}

TEST_F(Collection, ManyQuestionsWithoutWaitingAreAllAnswered) {
    const SocketPtr listener = Listening();
    const Connection connection = Connected();
    All().Add(listener.Get(), EVENT_ACCEPT);
    All().Add(connection.server.Get(), EVENT_READ);
    All().Add(connection.server.Get(), EVENT_CLOSE);
    const int before = ThisProcess::OpenDescriptors();
    for (int count = 0; count < 5000; ++count) {
        ASSERT_FALSE(Select(All(), 0));
    }
    EXPECT_EQ(ThisProcess::OpenDescriptors(), before);
    SendAll(*connection.client, "x");
    EXPECT_EQ(SelectAll(All()), (AllReady{{connection.server.Get(), EVENT_READ}}));
}

TEST_F(Collection, AWaitIsNeitherCutShortNorEndedBySignals) {
    const Connection connection = Connected();
    All().Add(connection.server.Get(), EVENT_READ);
    ThisProcess::InterruptedThread thread;
    auto other = std::async(std::launch::async, [&] {
        for (int count = 0; count < 20; ++count) {
            thread.Interrupt();
        }
    });
    const auto start = Clock::now();
    EXPECT_FALSE(Select(All(), 2));
    EXPECT_GE(Clock::now() - start, std::chrono::seconds(2));
    other.get();
}

// Meant for classic sockets; others have their events all the same.
TEST_F(Collection, AnExtendedSocketMayStandAmongTheOthers) {
    const XtPtr receiver =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_DATAGRAM, VelNet::Socket::PROTOCOL_UDP);
    receiver->Bind(VelNet::SPECIAL_LOOPBACK, "0");
    All().Add(receiver.Get(), EVENT_READ);
    EXPECT_FALSE(Select(All(), 0));
    receiver->SendTo("x", 1, VelNet::SPECIAL_LOOPBACK, PortOf(*receiver).c_str());
    EXPECT_EQ(SelectAll(All()), (AllReady{{receiver.Get(), EVENT_READ}}));
}

}  // namespace
}  // namespace Loopback

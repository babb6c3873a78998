// Sets of sockets: what select is asked, and what its answers become.
#include <VelNet/SocketCollection.h>

#include <climits>
#include <memory>

#include "ModuleTest.h"

namespace ModuleTests {
namespace {

struct DestroyCollection {
    void operator()(SocketCollection* collection) const { collection->Destroy(); }
};
using Collection = std::unique_ptr<SocketCollection, DestroyCollection>;

class CollectionSelecting : public LayerTest {
protected:
    static Collection NewCollection() { return Collection(CreateSocketCollection()); }

    // Sockets 1001, 1002, …
    static std::vector<SocketPtr> NewSockets(int count) {
        std::vector<SocketPtr> sockets;
        for (int made = 0; made < count; ++made)
            sockets.push_back(NewSocket());
        return sockets;
    }

    // The line of a select in which nothing gets ready.
    static std::string LineOf(SocketCollection& collection, unsigned int seconds) {
        ClearTranscript();
        EXPECT_EQ(collection.Select(seconds), nullptr);
        EXPECT_EQ(Transcript().size(), 1U);
        return Transcript().empty() ? "" : Transcript().front();
    }

    static Collection ReadyOf(SocketCollection& collection) {
        return Collection(collection.Select(0));
    }
};

TEST_F(CollectionSelecting, WatchesEachHandleOnceInTheSetOfItsEvents) {
    const std::vector<SocketPtr> sockets = NewSockets(3);
    const Collection collection = NewCollection();
    collection->Add(sockets[1].Get(), EVENT_READ);
    collection->Add(sockets[2].Get(), EVENT_WRITE);
    collection->Add(sockets[0].Get(), EVENT_ACCEPT);
    collection->Add(sockets[1].Get(), EVENT_CLOSE);
    collection->Add(sockets[1].Get(), EVENT_WRITE);
    collection->Add(sockets[2].Get(), 4);
    collection->Add(sockets[2].Get(), -1);
    EXPECT_EQ(LineOf(*collection, 7), "select(1004, {1002, 1001}, {1003, 1002}, null, {7, 0})");
}

TEST_F(CollectionSelecting, SetWithoutHandlesIsNone) {
    const std::vector<SocketPtr> sockets = NewSockets(1);
    const Collection readers = NewCollection();
    readers->Add(sockets[0].Get(), EVENT_CLOSE);
    EXPECT_EQ(LineOf(*readers, 0), "select(1002, {1001}, null, null, {0, 0})");
    const Collection writers = NewCollection();
    writers->Add(sockets[0].Get(), EVENT_WRITE);
    EXPECT_EQ(LineOf(*writers, 0x7FFFFFFF), "select(1002, null, {1001}, null, {2147483647, 0})");
}

TEST_F(CollectionSelecting, EachSetHoldsSixtyFour) {
    const std::vector<SocketPtr> sockets = NewSockets(66);
    const Collection collection = NewCollection();
    for (const SocketPtr& socket : sockets) {
        collection->Add(socket.Get(), EVENT_READ);
        collection->Add(socket.Get(), EVENT_WRITE);
    }
    std::string set = "{1001";
    for (int handle = 1002; handle <= 1064; ++handle)
        set += ", " + std::to_string(handle);
    set += '}';
    EXPECT_EQ(LineOf(*collection, 1), "select(1067, " + set + ", " + set + ", null, {1, 0})");
}

TEST_F(CollectionSelecting, NothingToWatchIsSleptAway) {
    const std::vector<SocketPtr> sockets = NewSockets(1);
    const Collection collection = NewCollection();
    EXPECT_EQ(LineOf(*collection, 2), "Sleep(2000)");
    collection->Add(sockets[0].Get(), 4);
    EXPECT_EQ(LineOf(*collection, 0), "Sleep(0)");
}

TEST_F(CollectionSelecting, EachFailureIsTold) {
    const std::vector<SocketPtr> sockets = NewSockets(1);
    const Collection collection = NewCollection();
    collection->Add(sockets[0].Get(), EVENT_READ);
    ExpectEachFailure(
        {.failWith = [](int number) { On::Select().Fails(number); },
         .operation = [&] { Collection(collection->Select(3)); },
         .head = "VelNet::SocketCollection::Select() - FAIL. Socket call ::select failed",
         .calls = {"select(1002, {1001}, null, null, {3, 0})", "WSAGetLastError()"}});
    EXPECT_EQ(collection->GetCount(), 1U);
}

TEST_F(CollectionSelecting, ReadyEntriesComeBackByTheirStatus) {
    const std::vector<SocketPtr> sockets = NewSockets(2);
    sockets[0]->Listen();
    sockets[1]->Connect(OctetsOf("10.0.0.1"), 80);
    const Collection collection = NewCollection();
    for (const int event : {EVENT_READ, EVENT_ACCEPT, EVENT_WRITE, EVENT_CLOSE})
        for (const SocketPtr& socket : sockets)
            collection->Add(socket.Get(), event);
    On::Select().Ready({1001, 1002}, {1002});
    // Each of the connection's four entries is asked about three times.
    for (int question = 0; question < 12; ++question)
        On::Ioctlsocket().Returns(5);
    ClearTranscript();
    const Collection ready = ReadyOf(*collection);
    ASSERT_NE(ready, nullptr);
    ASSERT_EQ(ready->GetCount(), 3U);
    EXPECT_TRUE(ready->GetSocket(0)->IsSameSocket(*sockets[1]));
    EXPECT_EQ(ready->GetEvent(0), EVENT_READ);
    EXPECT_TRUE(ready->GetSocket(1)->IsSameSocket(*sockets[0]));
    EXPECT_EQ(ready->GetEvent(1), EVENT_ACCEPT);
    EXPECT_TRUE(ready->GetSocket(2)->IsSameSocket(*sockets[1]));
    EXPECT_EQ(ready->GetEvent(2), EVENT_WRITE);
    EXPECT_EQ(CountOf("ioctlsocket"), 12);
}

TEST_F(CollectionSelecting, ConnectionWithoutBytesIsReportedAsClosed) {
    const std::vector<SocketPtr> sockets = NewSockets(1);
    sockets[0]->Connect(OctetsOf("10.0.0.1"), 80);
    const Collection collection = NewCollection();
    for (const int event : {EVENT_READ, EVENT_CLOSE})
        collection->Add(sockets[0].Get(), event);
    On::Select().Ready({1001});
    const Collection ready = ReadyOf(*collection);
    ASSERT_NE(ready, nullptr);
    ASSERT_EQ(ready->GetCount(), 1U);
    EXPECT_EQ(ready->GetEvent(0), EVENT_CLOSE);
}

}  // namespace
}  // namespace ModuleTests

// Owners of what the library hands out without one.
#include <VelCompanion/Owners.h>
#include <loopback/ExtendedTest.h>

#include <utility>

namespace Companion {
namespace {

using Loopback::RecordingSink;
using Loopback::SocketPtr;
using VelCompanion::CollectionOwner;

using OwnersOfCollections = Loopback::LoopbackTest;

TEST_F(OwnersOfCollections, ReleaseTheSocketsAtTheirEnd) {
    const SocketPtr listener = Loopback::Listening();
    const SocketPtr client = Loopback::ConnectedTo(*listener);
    CollectionOwner collection = VelCompanion::MakeCollection();
    collection->Add(Loopback::Accepted(*listener).Get(), VelNet::EVENT_WRITE);
    {
        const CollectionOwner ready = VelCompanion::Select(*collection, 10);
        ASSERT_TRUE(ready);
        EXPECT_EQ(ready->GetCount(), 1U);
    }
    collection.reset();
    // The collections had the only references.
    EXPECT_EQ(Loopback::FailureOfReceive(*client), Loopback::ConnectionClosed());
}

TEST_F(OwnersOfCollections, AreEmptyWhenTheTimeElapsed) {
    const SocketPtr listener = Loopback::Listening();
    const CollectionOwner collection = VelCompanion::MakeCollection();
    collection->Add(listener.Get(), VelNet::EVENT_ACCEPT);
    EXPECT_FALSE(VelCompanion::Select(*collection, 0));
}

// The failure is one that writes a record.
void Fail() {
    const SocketPtr socket = Loopback::StreamSocket();
    EXPECT_THROW(socket->Listen(), VelNet::Exception);
}

using OwnersOfTheLog = Loopback::LoopbackTest;

TEST_F(OwnersOfTheLog, DirectRecordsToTheirSinkAndThenBack) {
    Loopback::EnableOnly({Loopback::Error});
    RecordingSink outer;
    RecordingSink inner;
    {
        const VelCompanion::SinkInUse outerInUse(outer);
        {
            const VelCompanion::SinkInUse innerInUse(inner);
            Fail();
            EXPECT_EQ(inner.Take().size(), 1U);
        }
        Fail();
        EXPECT_EQ(outer.Take().size(), 1U);
    }
    Fail();
    EXPECT_EQ(inner.Take().size() + outer.Take().size(), 0U);
    EXPECT_EQ(Sink().Take().size(), 1U);
}

using OwnersOfSockets = Loopback::LoopbackTest;

TEST_F(OwnersOfSockets, ShareOneSocket) {
    SocketPtr socket = Loopback::StreamSocket();
    const SocketPtr second = VelCompanion::Share(socket);
    EXPECT_EQ(second.Get(), socket.Get());
    socket = {};
    EXPECT_TRUE(second->IsValid());
    EXPECT_FALSE(VelCompanion::Share(socket));
}

TEST_F(OwnersOfSockets, ExtendedOnesAreSocketsToo) {
    Loopback::XtPtr extended =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    const SocketPtr shared = VelCompanion::AsSocket(VelCompanion::Share(extended));
    EXPECT_EQ(shared.Get(), extended.Get());
    const SocketPtr socket = VelCompanion::AsSocket(std::move(extended));
    EXPECT_FALSE(extended);
    EXPECT_TRUE(socket->IsSameSocket(*shared));
    EXPECT_FALSE(VelCompanion::AsSocket({}));
}

}  // namespace
}  // namespace Companion

// Sockets as what they are here: descriptors of the process.
#include <pthread.h>

#include <algorithm>
#include <vector>

#include "ClosedStandardStreams.h"
#include "conformance/Provocation.h"
#include "conformance/Scene.h"

namespace Conformance {
namespace {

using Descriptors = Started;

TEST_F(Descriptors, IsNotInheritedByPrograms) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket client = NewStream();
    ASSERT_TRUE(Succeeds(Connect(client, LocalAddress(listener))));
    EXPECT_FALSE(IsInheritedByPrograms(client.Get()));
    EXPECT_FALSE(IsInheritedByPrograms(Accept(listener).Get()));
}

TEST_F(Descriptors, FailsWhenNoDescriptorIsLeft) {
    const DescriptorLimit limit(DescriptorLimit::Exhausting());
    ASSERT_TRUE(limit.IsSet());
    EXPECT_TRUE(FailsWith(10024, Winsock::socket(2, 1, 0)));
}

TEST_F(Descriptors, AcceptFailsWhenNoDescriptorIsLeftAndLaterSucceeds) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket client = NewStream();
    ASSERT_TRUE(Succeeds(Connect(client, LocalAddress(listener))));
    {
        const DescriptorLimit limit(DescriptorLimit::Exhausting());
        ASSERT_TRUE(limit.IsSet());
        EXPECT_TRUE(FailsWith(10024, Winsock::accept(listener.Get(), nullptr, nullptr)));
    }
    Accept(listener);
}

TEST_F(Descriptors, SocketsAboveTheOldLimitOfSetsWorkAsAll) {
    const DescriptorLimit limit(4096);
    if (!limit.IsSet()) GTEST_SKIP() << "the system allows no more than 1024 descriptors";
    std::vector<OwnedSocket> sockets;
    for (int count = 0; count < 1200; ++count)
        sockets.push_back(NewStream());
    const Pair pair = NewConnectedPair();
    EXPECT_GT(pair.server.Get(), 1024U);
    EXPECT_TRUE(Succeeds(SetOption(pair.server, Winsock::OptionReceiveTimeout, 10)));
    EXPECT_TRUE(FailsWith(10060, TryReceive(pair.server)));
    EXPECT_TRUE(Succeeds(Send(pair.client, "far up"), 6));
    EXPECT_EQ(Receive(pair.server), "far up");
}

TEST_F(Descriptors, ANumberThatIsUsedAgainDoesNotKeepItsFormersPort) {
    OwnedSocket first = NewBoundStream();
    const Winsock::Handle number = first.Get();
    const unsigned int port = LocalPort(first);
    first.Close();
    const OwnedSocket unbound = NewStream();
    ASSERT_EQ(unbound.Get(), number);
    EXPECT_TRUE(Succeeds(Bind(NewStream(), Loopback(port))));
}

TEST_F(Descriptors, ANumberThatIsUsedAgainDoesNotKeepItsFormersReports) {
    OwnedSocket former = NewBoundDatagram();
    const Winsock::AddressIpv4 nobody = LocalAddress(former);
    former.Close();
    OwnedSocket first = NewDatagram();
    const Winsock::Handle number = first.Get();
    ASSERT_TRUE(Succeeds(Connect(first, nobody)));
    for (int count = 0; count < 2; ++count) {
        ASSERT_TRUE(Succeeds(Send(first, "anybody?"), 8));
        AwaitEnd(first.Get());
    }
    first.Close();
    const OwnedSocket second = NewBoundDatagram();
    ASSERT_EQ(second.Get(), number);
    SetNonBlocking(second);
    EXPECT_TRUE(FailsWith(10035, TryReceive(second)));
}

// The system has a second option, which would deal the datagrams out by their senders.
TEST_F(Descriptors, OfTwoDatagramSocketsThatShareAPortOneGetsAll) {
    OwnedSocket receivers[] = {NewDatagram(), NewDatagram()};
    unsigned int port = 0;
    for (const OwnedSocket& receiver : receivers) {
        ASSERT_TRUE(Succeeds(SetOption(receiver, Winsock::OptionReuseAddress, 1)));
        ASSERT_TRUE(Succeeds(Bind(receiver, Loopback(port))));
        port = LocalPort(receiver);
        SetNonBlocking(receiver);
    }
    constexpr int Senders = 32;
    for (int count = 0; count < Senders; ++count) {
        const OwnedSocket sender = NewDatagram();
        ASSERT_TRUE(Succeeds(Connect(sender, Loopback(port))));
        ASSERT_TRUE(Succeeds(Send(sender, "x"), 1));
    }
    int received[] = {0, 0};
    for (int which : {0, 1}) {
        while (TryReceive(receivers[which]) == 1)
            ++received[which];
    }
    EXPECT_EQ(std::max(received[0], received[1]), Senders);
    EXPECT_EQ(std::min(received[0], received[1]), 0);
}

TEST_F(Descriptors, SocketsNeverTakeTheNumbersOfClosedStandardStreams) {
    const OwnedSocket listener = NewListener();
    const RawPeer peer = RawPeer::ConnectedTo(LocalPort(listener));
    OwnedSocket sockets[3];
    int streamNumbersInUse = 0;
    {
        const ClosedStandardStreams none;
        sockets[0] = OwnedSocket(Winsock::socket(2, Winsock::TypeStream, 0));
        sockets[1] = OwnedSocket(Winsock::socket(2, Winsock::TypeDatagram, 0));
        sockets[2] = OwnedSocket(Winsock::accept(listener.Get(), nullptr, nullptr));
        streamNumbersInUse = ClosedStandardStreams::InUse();
    }
    EXPECT_EQ(streamNumbersInUse, 0);
    for (const OwnedSocket& socket : sockets) {
        EXPECT_GT(socket.Get(), 2U);
        EXPECT_NE(socket.Get(), Winsock::InvalidSocket);
        EXPECT_FALSE(IsInheritedByPrograms(socket.Get()));
    }
    peer.Send("to the socket");
    EXPECT_EQ(Receive(sockets[2]), "to the socket");
}

// The system would take the port away with the peer where it has chosen the port itself.
TEST_F(Descriptors, ADatagramSocketKeepsItsPortWhenThePeerIsTakenAway) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket bound = NewBoundDatagram();
    const OwnedSocket unbound = NewDatagram();
    for (const OwnedSocket* socket : {&bound, &unbound}) {
        ASSERT_TRUE(Succeeds(Connect(*socket, LocalAddress(receiver))));
        const unsigned int port = LocalPort(*socket);
        ASSERT_NE(port, 0U);
        ASSERT_TRUE(Succeeds(Connect(*socket, Ipv4(0, 0, 0, 0, 0))));
        ASSERT_EQ(LocalPort(*socket), port);
        const OwnedSocket sender = NewDatagram();
        ASSERT_TRUE(Succeeds(Connect(sender, Loopback(port))));
        ASSERT_TRUE(Succeeds(Send(sender, "still bound"), 11));
        AwaitReadable(socket->Get());
        EXPECT_EQ(Receive(*socket), "still bound");
    }
}

struct CancelledClose {
    Winsock::Handle handle;
    int result;

    // A thread's function.
    static void* Run(void* argument) {
        auto& scene = *static_cast<CancelledClose*>(argument);
        ::pthread_cancel(::pthread_self());
        scene.result = Winsock::closesocket(scene.handle);
        ::pthread_testcancel();
        return nullptr;
    }
};

TEST_F(Descriptors, AThreadThatIsBeingCancelledClosesItsSocketStill) {
    OwnedSocket socket = NewBoundStream();
    CancelledClose scene = {.handle = socket.Take(), .result = 4711};
    pthread_t thread = {};
    ASSERT_EQ(::pthread_create(&thread, nullptr, CancelledClose::Run, &scene), 0);
    void* end = nullptr;
    ASSERT_EQ(::pthread_join(thread, &end), 0);
    EXPECT_EQ(end, PTHREAD_CANCELED);
    EXPECT_EQ(scene.result, 0);
    EXPECT_EQ(NewStream().Get(), scene.handle);
}

}  // namespace
}  // namespace Conformance

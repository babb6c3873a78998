#include <cstring>
#include <optional>

#include "Provocation.h"
#include "Scene.h"
#include "WineAnswers.h"

namespace Conformance {
namespace {

unsigned int FreePort() {
    return LocalPort(NewBoundStream());
}

using ConnectionAttempt = Started;

TEST_F(ConnectionAttempt, ToNobodyIsRefused) {
    EXPECT_TRUE(FailsWith(10061, Connect(NewStream(), Loopback(FreePort()))));
    EXPECT_TRUE(FailsWith(10061, Connect(NewStream(23), LoopbackIpv6(FreePort()))));
}

TEST_F(ConnectionAttempt, AgainAfterARefusalSucceeds) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket socket = NewStream();
    EXPECT_TRUE(FailsWith(10061, Connect(socket, Loopback(FreePort()))));
    EXPECT_TRUE(FailsWith(10057, TryReceive(socket), "receiving after a refused connect"));
    EXPECT_TRUE(Succeeds(Connect(socket, LocalAddress(listener)), 0, "connecting after a refusal"));
}

TEST_F(ConnectionAttempt, ToNoAddressAtAllIsRefusedAsSuch) {
    const OwnedSocket listener = NewListener();
    Winsock::AddressIpv6 any = LoopbackIpv6(LocalPort(listener));
    any.address[15] = 0;
    EXPECT_TRUE(FailsWith(10049, Connect(NewStream(), Ipv4(0, 0, 0, 0, LocalPort(listener))),
                          "connecting to no address"));
    EXPECT_TRUE(FailsWith(10049, Connect(NewStream(23), any), "connecting to no address of IPv6"));
    EXPECT_TRUE(FailsWith(10049, Connect(NewStream(), Loopback(0)), "connecting to port 0"));
}

TEST_F(ConnectionAttempt, RefusesWrongAddresses) {
    const Winsock::AddressIpv4 ipv4 = Loopback(9);
    const Winsock::AddressIpv6 ipv6 = LoopbackIpv6(9);
    EXPECT_TRUE(FailsWith(10014, Winsock::connect(NewStream().Get(), &ipv4, 15),
                          "connecting with a short address"));
    EXPECT_TRUE(FailsWith(10014, Winsock::connect(NewStream(23).Get(), &ipv4, 16),
                          "an IPv4 address for an IPv6 socket"));
    EXPECT_TRUE(FailsWith(10047, Winsock::connect(NewStream().Get(), &ipv6, 28),
                          "connecting to an address of another family"));
    if (WineGivesNoAnswer("connecting to null")) return;
    EXPECT_TRUE(FailsWith(10014, Winsock::connect(NewStream().Get(), nullptr, 16)));
}

TEST_F(ConnectionAttempt, TakesALongerLength) {
    const OwnedSocket listener = NewListener();
    const Winsock::AddressIpv4 address = LocalAddress(listener);
    Winsock::AddressStorage storage = {};
    std::memcpy(&storage, &address, sizeof address);
    EXPECT_TRUE(Succeeds(Connect(NewStream(), storage)));
}

TEST_F(ConnectionAttempt, AConnectedSocketIsRefused) {
    const OwnedSocket listener = NewListener();
    const Pair pair = NewConnectedPair();
    EXPECT_TRUE(FailsWith(10056, Connect(pair.client, LocalAddress(listener))));
    EXPECT_TRUE(FailsWith(10056, Connect(pair.server, LocalAddress(listener))));
}

TEST_F(ConnectionAttempt, AListenerIsRefused) {
    const OwnedSocket listener = NewListener();
    EXPECT_TRUE(FailsWith(10022, Connect(listener, LocalAddress(listener))));
}

TEST_F(ConnectionAttempt, FromABoundSocketKeepsItsPort) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket socket = NewBoundStream();
    const unsigned int port = LocalPort(socket);
    EXPECT_TRUE(Succeeds(Connect(socket, LocalAddress(listener))));
    EXPECT_EQ(LocalPort(socket), port);
}

TEST_F(ConnectionAttempt, OverIpv6Works) {
    const OwnedSocket listener = NewStream(23);
    ASSERT_TRUE(Succeeds(Bind(listener, LoopbackIpv6(0))));
    ASSERT_TRUE(Succeeds(Winsock::listen(listener.Get(), 5)));
    Winsock::AddressIpv6 address = {};
    int length = sizeof address;
    ASSERT_TRUE(Succeeds(Winsock::getsockname(listener.Get(), &address, &length)));
    const OwnedSocket client = NewStream(23);
    EXPECT_TRUE(Succeeds(Connect(client, address)));
    Winsock::AddressStorage peer = {};
    length = sizeof peer;
    const OwnedSocket server(Winsock::accept(listener.Get(), &peer, &length));
    ASSERT_TRUE(IsOpen(server.Get()));
    EXPECT_EQ(peer.family, 23);
    EXPECT_EQ(length, 28);
    EXPECT_TRUE(Succeeds(Send(client, "six"), 3));
    EXPECT_EQ(Receive(server), "six");
}

TEST_F(ConnectionAttempt, OverIpv6GivesBothSidesTheNamesOfThatFamily) {
    const OwnedSocket listener = NewStream(23);
    ASSERT_TRUE(Succeeds(Bind(listener, LoopbackIpv6(0))));
    ASSERT_TRUE(Succeeds(Winsock::listen(listener.Get(), 5)));
    Winsock::AddressIpv6 address = {};
    int length = sizeof address;
    ASSERT_TRUE(Succeeds(Winsock::getsockname(listener.Get(), &address, &length)));
    const OwnedSocket client = NewStream(23);
    ASSERT_TRUE(Succeeds(Connect(client, address)));
    const OwnedSocket server = Accept(listener);
    for (const auto name : {Winsock::getsockname, Winsock::getpeername}) {
        for (const OwnedSocket* socket : {&client, &server}) {
            Winsock::AddressStorage storage = {};
            length = sizeof storage;
            ASSERT_TRUE(Succeeds(name(socket->Get(), &storage, &length)));
            EXPECT_EQ(storage.family, 23);
            EXPECT_EQ(length, 28);
            length = 27;
            EXPECT_TRUE(FailsWith(10014, name(socket->Get(), &storage, &length)));
        }
    }
}

TEST_F(ConnectionAttempt, IsNotBoundedByTheSendTimeout) {
    FullListener listener;
    const OwnedSocket socket = NewStream();
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionSendTimeout, 1)));
    const SignalStorm rareSignals([&] { listener.Drain(); }, 20);
    EXPECT_TRUE(Succeeds(Connect(socket, Loopback(listener.Port()))));
}

TEST_F(ConnectionAttempt, IsNotCutShortBySignals) {
    FullListener listener;
    const OwnedSocket socket = NewStream();
    {
        const SignalStorm storm([&] { listener.Drain(); });
        EXPECT_TRUE(Succeeds(Connect(socket, Loopback(listener.Port()))));
        EXPECT_GE(SignalStorm::SignalCount(), 20);
    }
    EXPECT_TRUE(Succeeds(Send(socket, "here"), 4));
}

TEST_F(ConnectionAttempt, ThatIsInterruptedAndThenRefusedIsRefused) {
    FullListener listener;
    const OwnedSocket socket = NewStream();
    const SignalStorm storm([&] { listener.Close(); });
    EXPECT_TRUE(FailsWith(10061, Connect(socket, Loopback(listener.Port()))));
}

TEST_F(ConnectionAttempt, AgainAfterAnInterruptedRefusalSucceeds) {
    const OwnedSocket target = NewListener();
    FullListener listener;
    const OwnedSocket socket = NewStream();
    {
        const SignalStorm storm([&] { listener.Close(); });
        EXPECT_TRUE(FailsWith(10061, Connect(socket, Loopback(listener.Port()))));
    }
    EXPECT_TRUE(Succeeds(Connect(socket, LocalAddress(target)), 0, "connecting after a refusal"));
}

class ConnectionUnfinished : public Started {
protected:
    void SetUp() override {
        Started::SetUp();
        listener_.emplace();
        socket_ = NewStream();
        SetNonBlocking(socket_);
        ASSERT_TRUE(FailsWith(10035, ConnectAgain()));
    }
    void TearDown() override {
        socket_.Close();
        listener_.reset();
        Started::TearDown();
    }
    int ConnectAgain() { return Connect(socket_, Loopback(listener_->Port())); }

    std::optional<FullListener> listener_;
    OwnedSocket socket_;
};

TEST_F(ConnectionUnfinished, IsNotBegunAgain) {
    EXPECT_TRUE(FailsWith(10037, ConnectAgain()));
    EXPECT_TRUE(FailsWith(10037, ConnectAgain()));
}

TEST_F(ConnectionUnfinished, HasNoConnectionYet) {
    EXPECT_TRUE(FailsWith(10057, Send(socket_, "early"), "transfer before the connection exists"));
    EXPECT_TRUE(FailsWith(10057, TryReceive(socket_), "transfer before the connection exists"));
    EXPECT_EQ(BytesAvailable(socket_), 0U);
}

TEST_F(ConnectionUnfinished, HasALocalName) {
    EXPECT_NE(LocalPort(socket_), 0U);
}

TEST_F(ConnectionUnfinished, TellsWhomItIsFor) {
    Winsock::AddressIpv4 peer = {};
    int length = sizeof peer;
    ASSERT_TRUE(Succeeds(Winsock::getpeername(socket_.Get(), &peer, &length), 0,
                         "the peer of an unfinished connect"));
    if (RunsOnWine()) return;
    EXPECT_EQ(PortOf(peer), listener_->Port());
    EXPECT_EQ(length, static_cast<int>(sizeof peer));
}

TEST_F(ConnectionUnfinished, IsConnectedOnceThePeerHasAccepted) {
    listener_->Drain();
    EXPECT_TRUE(FailsWith(10056, RepeatWhile(10037, [this] { return ConnectAgain(); })));
    EXPECT_TRUE(FailsWith(10056, ConnectAgain()));
    EXPECT_TRUE(Succeeds(Send(socket_, "now"), 3));
}

TEST_F(ConnectionUnfinished, CanSendOnceThePeerHasAcceptedThoughNobodyAskedForTheOutcome) {
    if (WineGivesNoAnswer("sending until the connection exists"))
        GTEST_SKIP() << "Wine gives no answer";
    listener_->Drain();
    EXPECT_EQ(RepeatWhile(10057, [this] { return Send(socket_, "now"); }), 3);
    EXPECT_TRUE(FailsWith(10035, TryReceive(socket_)));
}

TEST_F(ConnectionUnfinished, ThatWasRefusedIsBegunAnew) {
    const OwnedSocket target = NewListener();
    listener_->Close();
    const auto connectToTarget = [&] { return Connect(socket_, LocalAddress(target)); };
    EXPECT_TRUE(
        FailsWith(10035, RepeatWhile(10037, connectToTarget), "connecting after a refusal"));
    if (WineGivesNoAnswer("the outcome of a connect that was begun anew")) return;
    EXPECT_TRUE(FailsWith(10056, RepeatWhile(10037, connectToTarget)));
    Winsock::AddressIpv4 peer = {};
    int length = sizeof peer;
    ASSERT_TRUE(Succeeds(Winsock::getpeername(socket_.Get(), &peer, &length)));
    EXPECT_EQ(PortOf(peer), LocalPort(target));
}

using ConnectionAcceptance = Started;

TEST_F(ConnectionAcceptance, NeedsAListener) {
    EXPECT_TRUE(FailsWith(10022, Winsock::accept(NewStream().Get(), nullptr, nullptr)));
    EXPECT_TRUE(FailsWith(10022, Winsock::accept(NewBoundStream().Get(), nullptr, nullptr)));
    EXPECT_TRUE(
        FailsWith(10022, Winsock::accept(NewConnectedPair().client.Get(), nullptr, nullptr)));
    EXPECT_TRUE(FailsWith(10045, Winsock::accept(NewBoundDatagram().Get(), nullptr, nullptr)));
}

TEST_F(ConnectionAcceptance, WouldBlockOnANonBlockingListener) {
    const OwnedSocket listener = NewListener();
    SetNonBlocking(listener);
    EXPECT_TRUE(FailsWith(10035, Winsock::accept(listener.Get(), nullptr, nullptr)));
}

TEST_F(ConnectionAcceptance, TellsTheClientsAddress) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket client = NewStream();
    ASSERT_TRUE(Succeeds(Connect(client, LocalAddress(listener))));
    Winsock::AddressStorage storage = {};
    int length = sizeof storage;
    const OwnedSocket server(Winsock::accept(listener.Get(), &storage, &length));
    ASSERT_TRUE(IsOpen(server.Get()));
    Winsock::AddressIpv4 peer = {};
    std::memcpy(&peer, &storage, sizeof peer);
    EXPECT_EQ(length, 16);
    EXPECT_EQ(peer.family, 2);
    EXPECT_EQ(PortOf(peer), LocalPort(client));
    EXPECT_EQ(LocalPort(server), LocalPort(listener));
}

TEST_F(ConnectionAcceptance, WithTooLittleRoomLeavesTheConnectionWaiting) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket client = NewStream();
    ASSERT_TRUE(Succeeds(Connect(client, LocalAddress(listener))));
    Winsock::AddressIpv4 peer = {};
    if (WineGivesNoAnswer("accepting with too little room")) GTEST_SKIP() << "Wine gives no answer";
    for (int length : {0, 15}) {
        EXPECT_TRUE(FailsWith(10014, Winsock::accept(listener.Get(), &peer, &length)));
    }
    EXPECT_TRUE(FailsWith(10014, Winsock::accept(listener.Get(), &peer, nullptr)));
    Accept(listener);
}

TEST_F(ConnectionAcceptance, InheritsTheListenersMode) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket first = NewStream();
    const OwnedSocket second = NewStream();
    ASSERT_TRUE(Succeeds(Connect(first, LocalAddress(listener))));
    ASSERT_TRUE(Succeeds(Connect(second, LocalAddress(listener))));
    SetNonBlocking(listener);
    EXPECT_TRUE(FailsWith(10035, TryReceive(Accept(listener))));
    SetNonBlocking(listener, false);
    const OwnedSocket blocking = Accept(listener);
    ASSERT_TRUE(Succeeds(SetOption(blocking, Winsock::OptionReceiveTimeout, 10)));
    EXPECT_TRUE(FailsWith(10060, TryReceive(blocking)));
}

TEST_F(ConnectionAcceptance, InheritsTheListenersTimeout) {
    const OwnedSocket listener = NewListener();
    ASSERT_TRUE(Succeeds(SetOption(listener, Winsock::OptionReceiveTimeout, 10)));
    const RawPeer client = RawPeer::ConnectedTo(LocalPort(listener));
    EXPECT_TRUE(FailsWith(10060, TryReceive(Accept(listener))));
}

TEST_F(ConnectionAcceptance, IsNotBoundedByTheListenersTimeout) {
    const OwnedSocket listener = NewListener();
    const unsigned int port = LocalPort(listener);
    ASSERT_TRUE(Succeeds(SetOption(listener, Winsock::OptionReceiveTimeout, 1)));
    RawPeer client;
    const SignalStorm rareSignals([&] { client = RawPeer::ConnectedTo(port); }, 20);
    Accept(listener);
    EXPECT_GE(SignalStorm::SignalCount(), 20);
}

TEST_F(ConnectionAcceptance, IsNotCutShortBySignals) {
    const OwnedSocket listener = NewListener();
    const unsigned int port = LocalPort(listener);
    RawPeer client;
    const SignalStorm storm([&] { client = RawPeer::ConnectedTo(port); });
    Accept(listener);
    EXPECT_GE(SignalStorm::SignalCount(), 20);
}

TEST_F(ConnectionAcceptance, AConnectionThatWasResetMeanwhileIsReportedByItsSocket) {
    const OwnedSocket listener = NewListener();
    RawPeer client = RawPeer::ConnectedTo(LocalPort(listener));
    client.Reset();
    const OwnedSocket server = Accept(listener);
    EXPECT_TRUE(FailsWith(10054, TryReceive(server), "receiving after a reset"));
}

}  // namespace
}  // namespace Conformance

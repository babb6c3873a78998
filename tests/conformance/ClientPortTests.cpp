// The local ports of streams that connect.
#include "Provocation.h"
#include "Scene.h"
#include "WineAnswers.h"

namespace Conformance {
namespace {

using ClientPort = Started;

OwnedSocket NewReusingStream() {
    OwnedSocket socket = NewStream();
    EXPECT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReuseAddress, 1)));
    return socket;
}

void ExpectTaken(const OwnedSocket& client) {
    EXPECT_TRUE(FailsWith(10048, Bind(NewStream(), LocalAddress(client))));
    EXPECT_TRUE(FailsWith(10013, Bind(NewReusingStream(), LocalAddress(client))));
    EXPECT_TRUE(FindsPortTakenThoughReusing(LocalPort(client)));
}

TEST_F(ClientPort, IsTakenWhileTheConnectionLasts) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket client = NewBoundStream();
    ASSERT_TRUE(Succeeds(Connect(client, LocalAddress(listener))));
    ExpectTaken(client);
}

TEST_F(ClientPort, IsTakenThoughNobodyBoundItWhileTheConnectionLasts) {
    if (WineGivesNoAnswer("the port of a client that nobody bound"))
        GTEST_SKIP() << "Wine gives no answer";
    ExpectTaken(NewConnectedPair().client);
}

TEST_F(ClientPort, OfAStreamThatSharesItIsFreeToThoseThatShareItToo) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket client = NewReusingStream();
    ASSERT_TRUE(Succeeds(Bind(client, Loopback(0))));
    ASSERT_TRUE(Succeeds(Connect(client, LocalAddress(listener))));
    EXPECT_TRUE(FailsWith(10048, Bind(NewStream(), LocalAddress(client))));
    EXPECT_TRUE(Succeeds(Bind(NewReusingStream(), LocalAddress(client))));
}

// The client closes first, so that its system keeps what is left of the connection.
Winsock::AddressIpv4 ConnectAndClose(OwnedSocket client) {
    const OwnedSocket listener = NewListener();
    EXPECT_TRUE(Succeeds(Connect(client, LocalAddress(listener))));
    const Winsock::AddressIpv4 address = LocalAddress(client);
    const OwnedSocket server = Accept(listener);
    client.Close();
    EXPECT_EQ(TryReceive(server), 0);
    return address;
}

TEST_F(ClientPort, CanBeBoundAtOnceWhenTheConnectionHasEnded) {
    for (const bool bound : {false, true}) {
        const Winsock::AddressIpv4 address =
            ConnectAndClose(bound ? NewBoundStream() : NewStream());
        ASSERT_TRUE(FindsPortTaken(PortOf(address)) || EndedConnectionsLeavePortsFree());
        const OwnedSocket again = NewStream();
        EXPECT_TRUE(Succeeds(Bind(again, address)));
        EXPECT_TRUE(FindsPortTakenThoughReusing(PortOf(address)));
    }
}

TEST_F(ClientPort, CanBeBoundAtOnceByAStreamThatSharesItToo) {
    const Winsock::AddressIpv4 address = ConnectAndClose(NewStream());
    const OwnedSocket again = NewReusingStream();
    EXPECT_TRUE(Succeeds(Bind(again, address)));
    EXPECT_TRUE(Succeeds(Bind(NewReusingStream(), address)));
    EXPECT_TRUE(FailsWith(10048, Bind(NewStream(), address)));
}

// As a client that closes without ever having asked for the outcome.
TEST_F(ClientPort, CanBeBoundAtOnceThoughNobodySawTheConnection) {
    const OwnedSocket listener = NewListener();
    OwnedSocket client = NewStream();
    SetNonBlocking(client);
    ASSERT_TRUE(FailsWith(10035, Connect(client, LocalAddress(listener))));
    const Winsock::AddressIpv4 address = LocalAddress(client);
    const OwnedSocket server = Accept(listener);
    client.Close();
    EXPECT_EQ(TryReceive(server), 0);
    EXPECT_TRUE(Succeeds(Bind(NewStream(), Loopback(PortOf(address)))));
}

}  // namespace
}  // namespace Conformance

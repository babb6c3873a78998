
#include "Provocation.h"
#include "Scene.h"

namespace Conformance {
namespace {

struct CreationRow {
    int family;
    int type;
    int protocol;
    int error;

    friend void PrintTo(const CreationRow& row, std::ostream* stream) {
        *stream << row.family << ", " << row.type << ", " << row.protocol;
    }
};

class CreationRefused : public testing::WithParamInterface<CreationRow>, public Started {};

TEST_P(CreationRefused, TellsWhichArgumentIsWrong) {
    const auto [family, type, protocol, error] = GetParam();
    EXPECT_TRUE(FailsWith(error, Winsock::socket(family, type, protocol)));
}

INSTANTIATE_TEST_SUITE_P(Rows, CreationRefused,
                         testing::Values(CreationRow{2, 2, 6, 10043}, CreationRow{2, 1, 17, 10043},
                                         CreationRow{23, 2, 6, 10043},
                                         CreationRow{2, 1, 4711, 10043},
                                         CreationRow{2, 0, 4711, 10043},
                                         CreationRow{2, 7, 0, 10044}, CreationRow{2, -1, 0, 10044},
                                         CreationRow{99, 7, 0, 10044}, CreationRow{99, 1, 0, 10047},
                                         CreationRow{10, 1, 0, 10047}, CreationRow{-1, 1, 0, 10047},
                                         CreationRow{0, 1, 0, 10022}, CreationRow{0, 0, 0, 10022},
                                         CreationRow{1, 1, 0, 10047}));

using Creation = Started;

bool IsStream(const OwnedSocket& socket) {
    return FailsWith(10057, TryReceive(socket));
}

bool IsUnboundDatagram(const OwnedSocket& socket) {
    SetNonBlocking(socket);
    return FailsWith(10022, TryReceive(socket), "receiving on an unbound socket");
}

TEST_F(Creation, TheProtocolDecidesWhereTheTypeIsZero) {
    for (const int family : {2, 23}) {
        EXPECT_TRUE(IsStream(OwnedSocket(Winsock::socket(family, 0, 0))));
        EXPECT_TRUE(IsStream(OwnedSocket(Winsock::socket(family, 0, 6))));
        EXPECT_TRUE(IsUnboundDatagram(OwnedSocket(Winsock::socket(family, 0, 17))));
    }
}

TEST_F(Creation, TheTypeDecidesWhereTheProtocolIsZeroOrItsOwn) {
    for (const int family : {2, 23}) {
        EXPECT_TRUE(IsStream(OwnedSocket(Winsock::socket(family, 1, 0))));
        EXPECT_TRUE(IsStream(OwnedSocket(Winsock::socket(family, 1, 6))));
        EXPECT_TRUE(IsUnboundDatagram(OwnedSocket(Winsock::socket(family, 2, 0))));
        EXPECT_TRUE(IsUnboundDatagram(OwnedSocket(Winsock::socket(family, 2, 17))));
    }
}

// The port that the system gives to a listener on all IPv6 addresses.
unsigned int ListenOnIpv6(const OwnedSocket& listener) {
    Winsock::AddressIpv6 any = LoopbackIpv6(0);
    any.address[15] = 0;
    int length = sizeof any;
    EXPECT_TRUE(Succeeds(Bind(listener, any)));
    EXPECT_TRUE(Succeeds(Winsock::listen(listener.Get(), 5)));
    EXPECT_TRUE(Succeeds(Winsock::getsockname(listener.Get(), &any, &length)));
    return any.port[0] * 256U + any.port[1];
}

TEST_F(Creation, AnIpv6SocketLeavesThePortToIpv4) {
    constexpr int attempts = 100;
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        const OwnedSocket ipv6 = NewStream(Winsock::FamilyIpv6);
        const OwnedSocket ipv4 = NewStream();
        const int result = Bind(ipv4, Ipv4(0, 0, 0, 0, ListenOnIpv6(ipv6)));
        // Another process may have the port in IPv4: then the next one has to do.
        const bool taken = result != 0 && Winsock::WSAGetLastError() == 10048;
        if (taken && attempt < attempts) continue;
        EXPECT_TRUE(Succeeds(result));
        return;
    }
}

TEST_F(Creation, ClosingSucceedsOnce) {
    OwnedSocket socket = NewStream();
    const Winsock::Handle handle = socket.Take();
    EXPECT_TRUE(Succeeds(Winsock::closesocket(handle)));
    EXPECT_TRUE(FailsWith(10038, Winsock::closesocket(handle)));
}

TEST_F(Creation, ClosingWithUnreadDataResetsThePeer) {
    Pair pair = NewConnectedPair();
    ASSERT_TRUE(Succeeds(Send(pair.client, "unread"), 6));
    AwaitReadable(pair.server.Get());
    pair.server.Close();
    EXPECT_TRUE(FailsWith(10054, TryReceive(pair.client),
                          "receiving from a peer that closed with unread data"));
}

}  // namespace
}  // namespace Conformance


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

class RefusedCreation : public testing::WithParamInterface<CreationRow>, public Started {};

TEST_P(RefusedCreation, TellsWhichArgumentIsWrong) {
    const auto [family, type, protocol, error] = GetParam();
    EXPECT_TRUE(FailsWith(error, Winsock::socket(family, type, protocol)));
}

INSTANTIATE_TEST_SUITE_P(Rows, RefusedCreation,
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

TEST_F(Creation, AnIpv6SocketLeavesThePortToIpv4) {
    const OwnedSocket ipv6 = NewStream(Winsock::FamilyIpv6);
    Winsock::AddressIpv6 any = LoopbackIpv6(0);
    any.address[15] = 0;
    ASSERT_TRUE(Succeeds(Bind(ipv6, any)));
    ASSERT_TRUE(Succeeds(Winsock::listen(ipv6.Get(), 5)));
    int length = sizeof any;
    ASSERT_TRUE(Succeeds(Winsock::getsockname(ipv6.Get(), &any, &length)));
    const unsigned int port = any.port[0] * 256U + any.port[1];
    EXPECT_TRUE(Succeeds(Bind(NewStream(), Ipv4(0, 0, 0, 0, port))));
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
    EXPECT_TRUE(FailsWith(10054, TryReceive(pair.client), "receiving after a reset"));
}

}  // namespace
}  // namespace Conformance

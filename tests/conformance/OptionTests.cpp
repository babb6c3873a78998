#include "Provocation.h"
#include "Scene.h"

namespace Conformance {
namespace {

using Winsock::setsockopt;

constexpr int Level = Winsock::LevelSocket;
constexpr char Value[8] = {100, 0, 0, 0, 0, 0, 0, 0};

struct OptionRow {
    int level;
    int option;
    int error;

    friend void PrintTo(const OptionRow& row, std::ostream* stream) {
        *stream << "level " << row.level << ", option " << row.option;
    }
};

class OptionRefused : public testing::WithParamInterface<OptionRow>, public Started {};

TEST_P(OptionRefused, TellsLevelFromOption) {
    const auto [level, option, error] = GetParam();
    const OwnedSocket stream = NewStream();
    const OwnedSocket datagram = NewDatagram(Winsock::FamilyIpv6);
    EXPECT_TRUE(FailsWith(error, setsockopt(stream.Get(), level, option, Value, 4)));
    EXPECT_TRUE(FailsWith(error, setsockopt(datagram.Get(), level, option, Value, 4)));
}

// The numbers 1, 2, 20 and 21 are options of Linux, which must not be reached through here.
INSTANTIATE_TEST_SUITE_P(Rows, OptionRefused,
                         testing::Values(OptionRow{0x8000, 4, 10022}, OptionRow{-1, 4, 10022},
                                         OptionRow{1, 2, 10022}, OptionRow{0, 0, 10042},
                                         OptionRow{41, 0, 10042}, OptionRow{Level, 0, 10042},
                                         OptionRow{Level, 2, 10042}, OptionRow{Level, 20, 10042},
                                         OptionRow{Level, 21, 10042},
                                         OptionRow{Level, 0x7FFF, 10042}));

class OptionTimeout : public testing::WithParamInterface<int>, public Started {};

TEST_P(OptionTimeout, TakesAnyValueOnAnySocket) {
    for (const unsigned int value : {0U, 1U, 999U, 1000U, 1001U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        EXPECT_TRUE(Succeeds(SetOption(NewStream(), GetParam(), value))) << value;
        EXPECT_TRUE(Succeeds(SetOption(NewDatagram(), GetParam(), value))) << value;
    }
}

TEST_P(OptionTimeout, NeedsFourBytesAndTakesMore) {
    const OwnedSocket socket = NewStream();
    for (const int length : {-1, 0, 1, 3}) {
        EXPECT_TRUE(FailsWith(10014, setsockopt(socket.Get(), Level, GetParam(), Value, length),
                              "a timeout of negative length"));
    }
    EXPECT_TRUE(Succeeds(setsockopt(socket.Get(), Level, GetParam(), Value, 8)));
}

TEST_P(OptionTimeout, RefusesNull) {
    const OwnedSocket socket = NewStream();
    EXPECT_TRUE(FailsWith(10014, setsockopt(socket.Get(), Level, GetParam(), nullptr, 4)));
}

INSTANTIATE_TEST_SUITE_P(Both, OptionTimeout,
                         testing::Values(Winsock::OptionSendTimeout,
                                         Winsock::OptionReceiveTimeout));

using OptionReuse = Started;

TEST_F(OptionReuse, TakesAnyLength) {
    for (const int length : {0, 1, 2, 4, 8}) {
        const OwnedSocket socket = NewStream();
        EXPECT_TRUE(Succeeds(setsockopt(socket.Get(), Level, 4, Value, length))) << length;
        EXPECT_TRUE(Succeeds(Bind(socket, Loopback(0))));
    }
}

TEST_F(OptionReuse, RefusesNull) {
    EXPECT_TRUE(FailsWith(10014, setsockopt(NewStream().Get(), Level, 4, nullptr, 4)));
}

using OptionBroadcast = Started;

TEST_F(OptionBroadcast, IsForDatagrams) {
    for (const int family : {2, 23}) {
        const OwnedSocket socket = NewDatagram(family);
        EXPECT_TRUE(Succeeds(SetOption(socket, Winsock::OptionBroadcast, 1)));
        EXPECT_TRUE(Succeeds(SetOption(socket, Winsock::OptionBroadcast, 0)));
    }
}

TEST_F(OptionBroadcast, IsNotForStreams) {
    for (const OwnedSocket& socket : {NewStream(), NewStream(23), NewListener()}) {
        EXPECT_TRUE(FailsWith(10042, SetOption(socket, Winsock::OptionBroadcast, 1),
                              "a stream that broadcasts"));
    }
}

TEST_F(OptionBroadcast, RefusesNull) {
    EXPECT_TRUE(FailsWith(10014, setsockopt(NewDatagram().Get(), Level, 0x20, nullptr, 4)));
}

using OptionCommand = Started;

TEST_F(OptionCommand, NonBlockingModeIsTakenInAnyState) {
    SetNonBlocking(NewStream());
    SetNonBlocking(NewDatagram());
    SetNonBlocking(NewListener());
    const Pair pair = NewConnectedPair();
    SetNonBlocking(pair.client);
    EXPECT_TRUE(FailsWith(10035, TryReceive(pair.client)));
    SetNonBlocking(pair.client, false);
    EXPECT_TRUE(Succeeds(SetOption(pair.client, Winsock::OptionReceiveTimeout, 10)));
    EXPECT_TRUE(FailsWith(10060, TryReceive(pair.client)));
}

TEST_F(OptionCommand, RefusesNullAndTheUnknown) {
    const OwnedSocket socket = NewStream();
    unsigned int argument = 1;
    EXPECT_TRUE(FailsWith(10014, Winsock::ioctlsocket(socket.Get(), 0x8004667EU, nullptr)));
    EXPECT_TRUE(FailsWith(10014, Winsock::ioctlsocket(socket.Get(), 0x4004667FU, nullptr)));
    EXPECT_TRUE(FailsWith(10045, Winsock::ioctlsocket(socket.Get(), 0x5421U, &argument)));
}

TEST_F(OptionCommand, AStreamThatIsNotConnectedHasNoBytes) {
    EXPECT_EQ(BytesAvailable(NewStream()), 0U);
    EXPECT_EQ(BytesAvailable(NewBoundStream()), 0U);
    const OwnedSocket listener = NewListener();
    EXPECT_EQ(BytesAvailable(listener), 0U);
    const RawPeer waiting = RawPeer::ConnectedTo(LocalPort(listener));
    AwaitReadable(listener.Get());
    EXPECT_EQ(BytesAvailable(listener), 0U);
}

TEST_F(OptionCommand, AConnectedStreamCountsItsBytesUntilTheyAreRead) {
    Pair pair = NewConnectedPair();
    ASSERT_TRUE(Succeeds(Send(pair.client, "12345"), 5));
    AwaitReadable(pair.server.Get());
    EXPECT_EQ(BytesAvailable(pair.server), 5U);
    EXPECT_EQ(Receive(pair.server, 3), "123");
    EXPECT_EQ(BytesAvailable(pair.server), 2U);
    pair.client.Close();
    EXPECT_EQ(Receive(pair.server), "45");
    EXPECT_EQ(Receive(pair.server), "");
    EXPECT_EQ(BytesAvailable(pair.server), 0U);
}

TEST_F(OptionCommand, AResetStreamHasNoBytesAndTheQuestionSucceeds) {
    const OwnedSocket listener = NewListener();
    RawPeer peer = RawPeer::ConnectedTo(LocalPort(listener));
    const OwnedSocket socket = Accept(listener);
    peer.Reset();
    AwaitEnd(socket.Get());
    EXPECT_EQ(BytesAvailable(socket), 0U);
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket), "receiving after a reset"));
    EXPECT_EQ(BytesAvailable(socket), 0U);
}

TEST_F(OptionCommand, ADatagramSocketCountsWhatWaits) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewDatagram();
    EXPECT_EQ(BytesAvailable(receiver), 0U);
    EXPECT_EQ(BytesAvailable(sender), 0U);
    ASSERT_TRUE(Succeeds(Connect(sender, LocalAddress(receiver))));
    ASSERT_TRUE(Succeeds(Send(sender, "abc"), 3));
    AwaitReadable(receiver.Get());
    EXPECT_EQ(BytesAvailable(receiver), 3U);
}

}  // namespace
}  // namespace Conformance

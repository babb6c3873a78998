// Options that must be refused before the system sees them.
#include <sys/socket.h>
#include <sys/time.h>

#include "conformance/Scene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using OptionOfTheSystem = Started;

constexpr char Value[4] = {1, 0, 0, 0};

TEST_F(OptionOfTheSystem, OfAKnownProtocolsLevelIsRefusedAsAnOption) {
    const OwnedSocket stream = NewStream();
    const OwnedSocket datagram = NewDatagram();
    for (const int level : {Winsock::ProtocolTcp, Winsock::ProtocolUdp}) {
        EXPECT_TRUE(FailsWith(10042, Winsock::setsockopt(stream.Get(), level, 1, Value, 4)));
        EXPECT_TRUE(FailsWith(10042, Winsock::setsockopt(datagram.Get(), level, 1, Value, 4)));
    }
}

TEST_F(OptionOfTheSystem, OfAnotherLevelIsNoneOfTheSocketsWithItsNumber) {
    const OwnedSocket stream = NewStream();
    const OwnedSocket datagram = NewDatagram(Winsock::FamilyIpv6);
    for (const int level : {Winsock::LevelIpv4, Winsock::LevelIpv6, Winsock::ProtocolTcp}) {
        for (const int option : {Winsock::OptionReuseAddress, Winsock::OptionBroadcast,
                                 Winsock::OptionSendTimeout, Winsock::OptionReceiveTimeout}) {
            EXPECT_TRUE(
                FailsWith(10042, Winsock::setsockopt(stream.Get(), level, option, Value, 4)));
            EXPECT_TRUE(
                FailsWith(10042, Winsock::setsockopt(datagram.Get(), level, option, Value, 4)));
        }
    }
}

// What joins and leaves groups here has other numbers on Windows.
TEST_F(OptionOfTheSystem, OfGroupsIsRefusedUnderItsOwnNumber) {
    const OwnedSocket ipv4 = NewDatagram();
    const OwnedSocket ipv6 = NewDatagram(Winsock::FamilyIpv6);
    constexpr char request[20] = {};
    for (const int option : {35, 36}) {
        EXPECT_TRUE(FailsWith(10042, Winsock::setsockopt(ipv4.Get(), 0, option, request, 8)));
    }
    for (const int option : {20, 21}) {
        EXPECT_TRUE(FailsWith(10042, Winsock::setsockopt(ipv6.Get(), 41, option, request, 20)));
    }
}

TEST_F(OptionOfTheSystem, OfGroupsIsNoneAtOtherLevels) {
    const OwnedSocket stream = NewStream();
    constexpr char request[20] = {};
    for (const int level : {Winsock::LevelSocket, Winsock::ProtocolTcp, Winsock::ProtocolUdp}) {
        for (const int option : {Winsock::OptionAddMembership, Winsock::OptionDropMembership}) {
            EXPECT_TRUE(
                FailsWith(10042, Winsock::setsockopt(stream.Get(), level, option, request, 20)));
        }
    }
}

TEST_F(OptionOfTheSystem, OfALevelBeyondThoseThatThereAreIsRefusedForIt) {
    const OwnedSocket socket = NewStream();
    for (const int level : {0x10000, 0x7FFFFFFF})
        EXPECT_TRUE(FailsWith(10022, Winsock::setsockopt(socket.Get(), level, 1, Value, 4)));
}

TEST_F(OptionOfTheSystem, BroadcastRefusesANegativeLengthAndTakesAnyOther) {
    const OwnedSocket socket = NewDatagram();
    for (const int length : {-2147483647 - 1, -1}) {
        EXPECT_TRUE(
            FailsWith(10014, Winsock::setsockopt(socket.Get(), 0xFFFF, 0x20, Value, length)));
    }
    for (const int length : {0, 1, 2, 4}) {
        EXPECT_TRUE(Succeeds(Winsock::setsockopt(socket.Get(), 0xFFFF, 0x20, Value, length)));
    }
}

TEST_F(OptionOfTheSystem, ReuseRefusesANegativeLength) {
    const OwnedSocket socket = NewStream();
    for (const int length : {-1, -2147483647 - 1}) {
        EXPECT_TRUE(
            FailsWith(10014, Winsock::setsockopt(socket.Get(), Winsock::LevelSocket,
                                                 Winsock::OptionReuseAddress, Value, length)));
    }
}

TEST_F(OptionOfTheSystem, OfGroupsIsNoneOfATransportWithItsNumber) {
    const OwnedSocket datagram = NewDatagram();
    constexpr char request[20] = {};
    for (const int level : {Winsock::ProtocolTcp, Winsock::ProtocolUdp, Winsock::LevelSocket}) {
        for (const int option : {Winsock::OptionAddMembership, Winsock::OptionDropMembership}) {
            EXPECT_TRUE(
                FailsWith(10042, Winsock::setsockopt(datagram.Get(), level, option, request, 20)))
                << level;
        }
    }
}

// The system counts in ticks of at most ten milliseconds.
TEST_F(OptionOfTheSystem, TimeoutIsThatManyMilliseconds) {
    const OwnedSocket socket = NewStream();
    for (const long milliseconds : {1L, 999L, 1000L, 1001L, 1999L, 2000L, 60'500L}) {
        ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionSendTimeout,
                                       static_cast<unsigned int>(milliseconds))));
        timeval time = {};
        socklen_t length = sizeof time;
        ASSERT_EQ(
            ::getsockopt(static_cast<int>(socket.Get()), SOL_SOCKET, SO_SNDTIMEO, &time, &length),
            0);
        const long told = time.tv_sec * 1000 + time.tv_usec / 1000;
        EXPECT_GE(told, milliseconds);
        EXPECT_LE(told, milliseconds + 10);
    }
}

struct TimeoutRow {
    unsigned int milliseconds;
    timeval time;
};

// Of which the longest is none.
constexpr TimeoutRow Timeouts[] = {{0, {0, 0}},          {999, {0, 999'000}},
                                   {1'000, {1, 0}},      {2'001, {2, 1'000}},
                                   {0xFFFFFFFF, {0, 0}}, {0xFFFFFFFE, {4'294'967, 294'000}}};

using OptionTimeoutOfTheSystem = Started;

TEST_F(OptionTimeoutOfTheSystem, HasSecondsAndWhatIsLeft) {
    const OwnedSocket socket = NewStream();
    timeval told = {};
    const SystemCalls::HookedCall sets(SystemCalls::SystemCall::Setsockopt,
                                       [&told](const SystemCalls::Call& call) {
                                           told = *call.Pointer<const timeval>(3);
                                           return call.Make();
                                       });
    for (const int option : {Winsock::OptionReceiveTimeout, Winsock::OptionSendTimeout}) {
        for (const auto& [milliseconds, time] : Timeouts) {
            EXPECT_TRUE(Succeeds(SetOption(socket, option, milliseconds))) << milliseconds;
            EXPECT_EQ(told.tv_sec, time.tv_sec) << milliseconds;
            EXPECT_EQ(told.tv_usec, time.tv_usec) << milliseconds;
        }
    }
}

}  // namespace
}  // namespace Conformance

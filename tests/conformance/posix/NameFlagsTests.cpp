// Flags and texts that ask for what the resolver is not asked, each told from its neighbours.
#include <cstring>

#include "conformance/NameScene.h"

namespace Conformance {
namespace {

// Each flag by itself.
constexpr unsigned int LastFlag = 0x80000000U;

class NameFlags : public Started {
protected:
    int Ask(int flags, unsigned int hostRoom = 100, unsigned int serviceRoom = 100) {
        const Winsock::AddressIpv4 address = Loopback(80);
        return Winsock::getnameinfo(&address, sizeof address, host_, hostRoom, service_,
                                    serviceRoom, flags);
    }

    char host_[100] = {};
    char service_[100] = {};
};

TEST_F(NameFlags, OfAnAddresssTextsAreTheKnownOnesAlone) {
    constexpr int known = Winsock::NumericHost | Winsock::NumericService | Winsock::DatagramService;
    for (unsigned int flag = 1; flag != 0; flag = flag == LastFlag ? 0 : flag << 1U) {
        const bool isKnown = (flag & unsigned{known}) != 0;
        const int flags = static_cast<int>(flag) | Winsock::NumericHost | Winsock::NumericService;
        EXPECT_TRUE(Returns(isKnown ? 0 : 10022, Ask(flags))) << flag;
    }
}

TEST_F(NameFlags, OfHintsAreAllRefused) {
    for (unsigned int flag = 1; flag != 0; flag = flag == LastFlag ? 0 : flag << 1U) {
        Winsock::AddressInfo hints = Hints(2, 1);
        hints.flags = static_cast<int>(flag);
        List list;
        EXPECT_TRUE(Returns(10022, Resolve("127.0.0.1", "80", list, &hints))) << flag;
    }
}

TEST_F(NameFlags, AreOfNoUseWithoutRoomForEitherText) {
    EXPECT_TRUE(Returns(11001, Ask(Winsock::NumericHost | Winsock::NumericService, 0, 0)));
    const Winsock::AddressIpv4 address = Loopback(80);
    EXPECT_TRUE(Returns(11001, Winsock::getnameinfo(&address, sizeof address, nullptr, 100, nullptr,
                                                    100, Winsock::NumericHost)));
}

TEST_F(NameFlags, ComeBehindAnAddressThatCanBeRead) {
    const unsigned short unspecified[14] = {};
    EXPECT_TRUE(Returns(10047, Winsock::getnameinfo(unspecified, sizeof unspecified, host_, 100,
                                                    service_, 100, 1)));
}

// The family is looked at first, and takes two bytes.
TEST_F(NameFlags, ComeBehindAnAddressThatIsLongEnoughForItsFamily) {
    const auto ask = [this](unsigned short family, int length) {
        return Winsock::getnameinfo(&family, length, host_, 100, service_, 100, 1);
    };
    EXPECT_TRUE(Returns(10047, ask(4711, 2)));
    EXPECT_TRUE(Returns(10014, ask(4711, 1)));
    EXPECT_TRUE(Returns(10014, ask(2, 2)));
    EXPECT_TRUE(Returns(10014, ask(2, 1)));
}

using NameFlagsOfProtocols = Started;

// A protocol's number without a type asks for the services of that type.
TEST_F(NameFlagsOfProtocols, TellDatagramsFromAllOthers) {
    const Winsock::AddressInfo udp = Hints(2, 0, 17);
    EXPECT_EQ(AddressesOf(Resolved("127.0.0.1", "tftp", &udp)), Texts{"127.0.0.1 69"});
    for (const int protocol : {0, 6, 16, 18, 41, 255}) {
        const Winsock::AddressInfo other = Hints(2, 0, protocol);
        List list;
        EXPECT_TRUE(Returns(10109, Resolve("127.0.0.1", "tftp", list, &other))) << protocol;
    }
}

using NameFlagsOfBrackets = Started;

TEST_F(NameFlagsOfBrackets, NothingButAPortMayFollowThem) {
    for (const char* const host : {"[::1]", "[::1]:8", "[::1]:65535"})
        EXPECT_EQ(AddressesOf(Resolved(host, "80")), Texts{"0:0:0:0:0:0:0:1%0 80"}) << host;
    for (const char* const host : {"[::1]8", "[::1]x8", "[::1]:", "[::1]:x", "[::1]::8", "[::1]]",
                                   "[]", "[", "[127.0.0.1]"}) {
        List list;
        EXPECT_TRUE(Returns(11001, Resolve(host, "80", list))) << host;
    }
}

TEST_F(NameFlagsOfBrackets, AreOfNoUseWithoutAPlaceForTheList) {
    EXPECT_TRUE(Returns(10014, Winsock::getaddrinfo("[::1]", "80", nullptr, nullptr)));
}

}  // namespace
}  // namespace Conformance

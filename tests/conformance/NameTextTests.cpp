// From addresses to host and service texts.
#include <climits>
#include <cstring>

#include "NameScene.h"
#include "WineAnswers.h"

namespace Conformance {
namespace {

constexpr int AllNumeric = Winsock::NumericHost | Winsock::NumericService;
constexpr int AllNumericDatagram = AllNumeric | Winsock::DatagramService;

template <typename Address>
Winsock::AddressStorage Stored(const Address& address) {
    Winsock::AddressStorage storage = {};
    std::memcpy(&storage, &address, sizeof address);
    return storage;
}

Winsock::AddressIpv6 Ipv6(const unsigned char (&bytes)[16], unsigned int port, unsigned int scope) {
    Winsock::AddressIpv6 address = LoopbackIpv6(port);
    std::memcpy(address.address, bytes, sizeof bytes);
    address.scope = scope;
    return address;
}

constexpr unsigned char LinkLocal[16] = {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
constexpr unsigned char AllOnes[16] = {255, 255, 255, 255, 255, 255, 255, 255,
                                       255, 255, 255, 255, 255, 255, 255, 255};

class NameText : public Started {
protected:
    int Ask(const Winsock::AddressStorage& address, int flags, unsigned int hostRoom = 1025,
            unsigned int serviceRoom = 32, int length = 128) {
        std::memset(host_, '#', sizeof host_);
        std::memset(service_, '#', sizeof service_);
        return Winsock::getnameinfo(&address, length, host_, hostRoom, service_, serviceRoom,
                                    flags);
    }
    // Host and service of an address that must have them.
    std::string Told(const Winsock::AddressStorage& address, int flags, int length = 128) {
        EXPECT_TRUE(Returns(0, Ask(address, flags, 1025, 32, length)));
        return std::string(host_) + " " + service_;
    }

    char host_[1100];
    char service_[100];
};

TEST_F(NameText, OfNumbersIsTheAddressAndThePort) {
    for (const int flags : {AllNumeric, AllNumericDatagram}) {
        EXPECT_EQ(Told(Stored(Loopback(80)), flags), "127.0.0.1 80");
        EXPECT_EQ(Told(Stored(Ipv4(255, 255, 255, 255, 65535)), flags), "255.255.255.255 65535");
        EXPECT_EQ(Told(Stored(Ipv4(0, 0, 0, 0, 0)), flags), "0.0.0.0 0");
        EXPECT_EQ(Told(Stored(LoopbackIpv6(8080)), flags), "::1 8080");
        EXPECT_EQ(Told(Stored(Ipv6(AllOnes, 1, 0)), flags),
                  "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff 1");
    }
}

TEST_F(NameText, TakesAnyLengthThatIsEnough) {
    for (const int length : {16, 17, 28, 128, INT_MAX}) {
        EXPECT_EQ(Told(Stored(Loopback(80)), AllNumeric, length), "127.0.0.1 80") << length;
    }
    for (const int length : {28, 29, 128, INT_MAX}) {
        EXPECT_EQ(Told(Stored(LoopbackIpv6(80)), AllNumeric, length), "::1 80") << length;
    }
}

TEST_F(NameText, NamesAScopeByItsNumber) {
    EXPECT_EQ(Told(Stored(Ipv6(LinkLocal, 80, 0)), AllNumeric), "fe80::1 80");
    EXPECT_EQ(Told(Stored(Ipv6(LinkLocal, 80, 54321)), AllNumeric), "fe80::1%54321 80");
    EXPECT_EQ(Told(Stored(Ipv6(LinkLocal, 80, 4294967295)), AllNumeric), "fe80::1%4294967295 80");
    if (WineGivesNoAnswer("the scope of an interface")) return;
    EXPECT_EQ(Told(Stored(Ipv6(LinkLocal, 80, 1)), AllNumeric), "fe80::1%1 80");
}

TEST_F(NameText, RefusesOtherFamilies) {
    Winsock::AddressStorage storage = {};
    for (const int family : {0, 1, 10, 65535}) {
        storage.family = static_cast<unsigned short>(family);
        EXPECT_TRUE(Returns(10047, Ask(storage, AllNumeric), "the text of no family")) << family;
        EXPECT_EQ(host_[0], '#');
        EXPECT_EQ(service_[0], '#');
    }
}

TEST_F(NameText, RefusesAddressesThatAreTooShort) {
    for (const int length : {15, 2, 1, 0, -1, INT_MIN}) {
        EXPECT_TRUE(Returns(10014, Ask(Stored(Loopback(80)), AllNumeric, 1025, 32, length),
                            "the text of a short address"))
            << length;
    }
    for (const int length : {27, 16}) {
        EXPECT_TRUE(Returns(10014, Ask(Stored(LoopbackIpv6(80)), AllNumeric, 1025, 32, length),
                            "the text of a short address"))
            << length;
    }
}

TEST_F(NameText, NeedsRoomForTheWholeText) {
    const Winsock::AddressStorage address = Stored(Loopback(1234));
    EXPECT_TRUE(Returns(0, Ask(address, AllNumeric, 10, 5)));
    EXPECT_STREQ(host_, "127.0.0.1");
    EXPECT_STREQ(service_, "1234");
    EXPECT_TRUE(Returns(122, Ask(address, AllNumeric, 9, 5), "room for a part of a text"));
    EXPECT_EQ(host_[9], '#');
    EXPECT_TRUE(Returns(122, Ask(address, AllNumeric, 10, 4), "room for a part of a text"));
    EXPECT_EQ(service_[4], '#');
    EXPECT_TRUE(Returns(122, Ask(address, AllNumeric, 1, 32), "room for a part of a text"));
    EXPECT_EQ(host_[1], '#');
}

TEST_F(NameText, WithoutRoomIsNotAskedFor) {
    const Winsock::AddressStorage address = Stored(Loopback(1234));
    EXPECT_TRUE(Returns(0, Ask(address, AllNumeric, 0, 5)));
    EXPECT_EQ(host_[0], '#');
    EXPECT_STREQ(service_, "1234");
    EXPECT_TRUE(Returns(0, Ask(address, AllNumeric, 10, 0)));
    EXPECT_STREQ(host_, "127.0.0.1");
    EXPECT_EQ(service_[0], '#');
    EXPECT_TRUE(
        Returns(0, Winsock::getnameinfo(&address, 128, nullptr, 100, service_, 32, AllNumeric)));
    EXPECT_STREQ(service_, "1234");
    EXPECT_TRUE(
        Returns(0, Winsock::getnameinfo(&address, 128, host_, 100, nullptr, 9, AllNumeric)));
    EXPECT_STREQ(host_, "127.0.0.1");
}

TEST_F(NameText, OfAServiceIsItsNameForItsType) {
    const int named = Winsock::NumericHost;
    EXPECT_EQ(Told(Stored(Loopback(80)), named), "127.0.0.1 http");
    EXPECT_EQ(Told(Stored(Loopback(69)), named | Winsock::DatagramService), "127.0.0.1 tftp");
    EXPECT_EQ(Told(Stored(Loopback(69)), named), "127.0.0.1 69");
}

TEST_F(NameText, OfTheLoopbackAddressIsAName) {
    EXPECT_TRUE(Returns(0, Ask(Stored(Loopback(80)), Winsock::NumericService)));
    EXPECT_STRNE(host_, "127.0.0.1");
    EXPECT_STREQ(service_, "80");
}

TEST_F(NameText, OfNullIsAFault) {
    EXPECT_TRUE(Returns(10014,
                        Winsock::getnameinfo(nullptr, 128, host_, 100, service_, 32, AllNumeric),
                        "the text of null"));
}

TEST(NameTexts, NeedAStartedLayer) {
    const Winsock::AddressIpv4 address = Loopback(80);
    char host[100];
    EXPECT_TRUE(Returns(
        10093,
        Winsock::getnameinfo(&address, sizeof address, host, sizeof host, nullptr, 0, AllNumeric),
        "the text of an address before start-up"));
}

}  // namespace
}  // namespace Conformance

// From host and service texts to addresses, as far as no name server is needed.
#include <algorithm>
#include <climits>

#include "NameScene.h"
#include "WineAnswers.h"

namespace Conformance {
namespace {

struct HostRow {
    const char* host;
    const char* service;
    const char* address;

    friend void PrintTo(const HostRow& row, std::ostream* stream) {
        *stream << row.host << " and " << (row.service != nullptr ? row.service : "null");
    }
};

class AddressListNumericHost : public Started, public testing::WithParamInterface<HostRow> {};

TEST_P(AddressListNumericHost, IsTheAddressThatItNames) {
    const Winsock::AddressInfo stream = Hints(0, 1);
    const List list = Resolved(GetParam().host, GetParam().service, &stream);
    EXPECT_EQ(AddressesOf(list), Texts{GetParam().address});
}

INSTANTIATE_TEST_SUITE_P(
    Rows, AddressListNumericHost,
    testing::Values(
        HostRow{"127.0.0.1", "80", "127.0.0.1 80"}, HostRow{"0.0.0.0", "0", "0.0.0.0 0"},
        HostRow{"255.255.255.255", "65535", "255.255.255.255 65535"},
        HostRow{"239.1.2.3", nullptr, "239.1.2.3 0"}, HostRow{"1.2.3.4", "", "1.2.3.4 0"},
        HostRow{"::1", "8080", "0:0:0:0:0:0:0:1%0 8080"},
        HostRow{"::0", nullptr, "0:0:0:0:0:0:0:0%0 0"}, HostRow{"::", "1", "0:0:0:0:0:0:0:0%0 1"},
        HostRow{"ff02::1", nullptr, "ff02:0:0:0:0:0:0:1%0 0"},
        HostRow{"2001:DB8::A:b", "9", "2001:db8:0:0:0:0:a:b%0 9"},
        HostRow{"::ffff:1.2.3.4", "9", "0:0:0:0:0:ffff:102:304%0 9"},
        HostRow{"fe80::1%1", "7", "fe80:0:0:0:0:0:0:1%1 7"},
        HostRow{"[::1]", "80", "0:0:0:0:0:0:0:1%0 80"},
        HostRow{"[::1]", nullptr, "0:0:0:0:0:0:0:1%0 0"},
        HostRow{"[::1]:80", nullptr, "0:0:0:0:0:0:0:1%0 0"},
        HostRow{"[::1]:8", nullptr, "0:0:0:0:0:0:0:1%0 0"},
        HostRow{"[::1]:80", "90", "0:0:0:0:0:0:0:1%0 90"}));

struct HintRow {
    int type;
    int protocol;

    friend void PrintTo(const HintRow& row, std::ostream* stream) {
        *stream << "type " << row.type << ", protocol " << row.protocol;
    }
};

class AddressListHint : public Started, public testing::WithParamInterface<HintRow> {};

TEST_P(AddressListHint, StandsUnchangedInTheOneEntryOfEachAddress) {
    const auto [type, protocol] = GetParam();
    if (type == 0 && protocol == 0 && WineGivesNoAnswer("a list without a type"))
        GTEST_SKIP() << "Wine gives no answer";
    for (const int family : {0, 2, 23}) {
        const Winsock::AddressInfo hints = Hints(family, type, protocol);
        const char* const host = family == 23 ? "::1" : "127.0.0.1";
        const List list = Resolved(host, "80", &hints);
        ASSERT_NE(list, nullptr);
        EXPECT_EQ(list->type, type);
        EXPECT_EQ(list->protocol, protocol);
        EXPECT_EQ(list->next, nullptr);
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, AddressListHint,
                         testing::Values(HintRow{0, 0}, HintRow{0, 6}, HintRow{0, 17},
                                         HintRow{1, 0}, HintRow{1, 6}, HintRow{1, 17},
                                         HintRow{2, 0}, HintRow{2, 6}, HintRow{2, 17},
                                         HintRow{1, 41}, HintRow{2, 58}));

using AddressListOf = Started;

TEST_F(AddressListOf, NoHintsHasNeitherTypeNorProtocol) {
    if (WineGivesNoAnswer("a list without a type")) GTEST_SKIP() << "Wine gives no answer";
    const List list = Resolved("127.0.0.1", "80");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->type, 0);
    EXPECT_EQ(list->protocol, 0);
    EXPECT_EQ(list->family, 2);
}

TEST_F(AddressListOf, AnAddressOfTheOtherFamilyIsNotFound) {
    List list;
    const Winsock::AddressInfo ipv4 = Hints(2);
    const Winsock::AddressInfo ipv6 = Hints(23);
    for (const char* host : {"::1", "[::1]"}) {
        const int error = Resolve(host, "80", list, &ipv4);
        EXPECT_TRUE(Returns(11001, error, "an address of the other family"));
        EXPECT_EQ(list, nullptr);
    }
    const int error = Resolve("127.0.0.1", "80", list, &ipv6);
    EXPECT_TRUE(Returns(11001, error, "an address of the other family"));
    EXPECT_EQ(list, nullptr);
}

TEST_F(AddressListOf, NoTextsIsNotFound) {
    List list;
    EXPECT_TRUE(Returns(11001, Resolve(nullptr, nullptr, list)));
    EXPECT_EQ(list, nullptr);
}

TEST_F(AddressListOf, NoHostIsTheLoopbackAddressOfBothFamilies) {
    const Winsock::AddressInfo stream = Hints(0, 1);
    Texts addresses = AddressesOf(Resolved(nullptr, "80", &stream));
    std::sort(addresses.begin(), addresses.end());
    EXPECT_EQ(addresses, (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.1 80"}));
}

TEST_F(AddressListOf, NoHostOfOneFamilyIsItsLoopbackAddress) {
    const Winsock::AddressInfo ipv4 = Hints(2, 1);
    const Winsock::AddressInfo ipv6 = Hints(23, 2);
    EXPECT_EQ(AddressesOf(Resolved(nullptr, "80", &ipv4)), Texts{"127.0.0.1 80"});
    EXPECT_EQ(AddressesOf(Resolved(nullptr, "80", &ipv6)), Texts{"0:0:0:0:0:0:0:1%0 80"});
}

TEST_F(AddressListOf, AnOpenBracketIsNotFound) {
    List list;
    EXPECT_TRUE(Returns(11001, Resolve("[::1", "80", list)));
    EXPECT_EQ(list, nullptr);
}

TEST_F(AddressListOf, AServiceIsKnownByName) {
    const Winsock::AddressInfo stream = Hints(2, 1);
    EXPECT_EQ(AddressesOf(Resolved("127.0.0.1", "http", &stream)), Texts{"127.0.0.1 80"});
}

TEST_F(AddressListOf, AServiceIsKnownInAnyCase) {
    const Winsock::AddressInfo stream = Hints(2, 1);
    for (const char* service : {"HTTP", "Http"}) {
        List list;
        const int error = Resolve("127.0.0.1", service, list, &stream);
        EXPECT_TRUE(Returns(0, error, "a service in another case")) << service;
        EXPECT_EQ(AddressesOf(list), error == 0 ? Texts{"127.0.0.1 80"} : Texts{}) << service;
    }
}

TEST_F(AddressListOf, AnUnknownServiceIsAnErrorOfItsOwn) {
    for (const char* service : {"80x", "-1", "no-such-service", "8 0", "0x50", "http "}) {
        List list;
        EXPECT_TRUE(Returns(10109, Resolve("127.0.0.1", service, list))) << service;
        EXPECT_EQ(list, nullptr);
    }
}

TEST_F(AddressListOf, AServiceOfTheOtherTypeIsUnknown) {
    List list;
    const Winsock::AddressInfo stream = Hints(2, 1);
    const Winsock::AddressInfo datagram = Hints(2, 2);
    EXPECT_TRUE(Returns(10109, Resolve("127.0.0.1", "tftp", list, &stream)));
    EXPECT_EQ(AddressesOf(Resolved("127.0.0.1", "tftp", &datagram)), Texts{"127.0.0.1 69"});
}

TEST_F(AddressListOf, UnknownTypesAndFamiliesAreRefused) {
    List list;
    for (const int type : {6, 99, -1, INT_MAX}) {
        const Winsock::AddressInfo hints = Hints(0, type);
        EXPECT_TRUE(Returns(10044, Resolve("127.0.0.1", "80", list, &hints), "an unknown type"))
            << type;
        EXPECT_EQ(list, nullptr);
    }
    for (const int family : {1, 10, -1, INT_MAX}) {
        const Winsock::AddressInfo hints = Hints(family);
        EXPECT_TRUE(Returns(10047, Resolve("127.0.0.1", "80", list, &hints), "an unknown family"))
            << family;
        EXPECT_EQ(list, nullptr);
    }
}

TEST_F(AddressListOf, TheEmptyNameIsTheOwnName) {
    char name[300];
    ASSERT_TRUE(Succeeds(Winsock::gethostname(name, sizeof name)));
    const Texts own = AddressesOf(Resolved(name, "80"));
    EXPECT_FALSE(own.empty());
    EXPECT_EQ(AddressesOf(Resolved("", "80")), own);
}

TEST_F(AddressListOf, TheOwnNameHasAddressesForAnyType) {
    for (const int type : {0, 1, 2}) {
        const Winsock::AddressInfo hints = Hints(0, type);
        const List list = Resolved("", nullptr, &hints);
        EXPECT_EQ(list->type, type);
        EXPECT_TRUE(AddressesOf(list)[0].ends_with(" 0"));
    }
}

TEST_F(AddressListOf, NothingCanBeGivenBack) {
    Winsock::freeaddrinfo(nullptr);
    EXPECT_TRUE(Succeeds(Winsock::WSACleanup()));
    Winsock::freeaddrinfo(nullptr);
    Winsock::StartupData data;
    EXPECT_EQ(Winsock::WSAStartup(0x202, &data), 0);
}

TEST(AddressLists, NeedAStartedLayer) {
    Winsock::AddressInfo unset = {};
    Winsock::AddressInfo* result = &unset;
    const int error = Winsock::getaddrinfo("127.0.0.1", "80", nullptr, &result);
    EXPECT_TRUE(Returns(10093, error, "numbers before start-up"));
    EXPECT_NE(result, &unset);
    Winsock::freeaddrinfo(result);
}

}  // namespace
}  // namespace Conformance

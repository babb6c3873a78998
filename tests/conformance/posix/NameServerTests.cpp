// Lists of addresses of names that a name server knows, which the test is itself.
#include "NameServer.h"
#include "conformance/NameScene.h"
#include "conformance/Provocation.h"

namespace Conformance {
namespace {

TEST(NameServerAddressList, HasTheAddressesOfBothFamilies) {
    WithNameServer([] {
        const Winsock::AddressInfo ipv4 = Hints(2);
        EXPECT_EQ(AddressesOf(Resolved("both.example", "80")),
                  (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.9 80"}));
        EXPECT_EQ(AddressesOf(Resolved("both.example", "80", &ipv4)), Texts{"127.0.0.9 80"});
        EXPECT_EQ(AddressesOf(Resolved("four.example", "80")), Texts{"127.0.0.9 80"});
    });
}

TEST(NameServerAddressList, TellsWhyThereIsNone) {
    WithNameServer([] {
        List list;
        EXPECT_TRUE(Returns(11001, Resolve("unknown.example", "80", list)));
        EXPECT_TRUE(Returns(11004, Resolve("none.example", "80", list)));
        EXPECT_TRUE(Returns(11002, Resolve("failing.example", "80", list)));
        EXPECT_EQ(list, nullptr);
    });
}

TEST(NameServerAddressList, DoesNotStandInTheWayOfTheOwnName) {
    WithNameServer([] {
        EXPECT_EQ(AddressesOf(Resolved("lonely", "80")),
                  (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.1 80"}));
    });
}

TEST(NameServerAddressList, IsAwaitedUnderAStormOfSignals) {
    constexpr int pause = 200;
    WithNameServer(
        [] {
            const SignalStorm storm({}, 1);
            EXPECT_EQ(AddressesOf(Resolved("both.example", "80")),
                      (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.9 80"}));
            EXPECT_GT(SignalStorm::SignalCount(), 0);
        },
        pause);
}

TEST(NameServerHostByName, TellsWhyThereIsNone) {
    WithNameServer([] {
        EXPECT_NE(Winsock::gethostbyname("four.example"), nullptr);
        EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname("unknown.example")));
        EXPECT_TRUE(FailsWith(11004, Winsock::gethostbyname("none.example")));
        EXPECT_TRUE(FailsWith(11004, Winsock::gethostbyname("six.example")));
        EXPECT_TRUE(FailsWith(11002, Winsock::gethostbyname("failing.example")));
    });
}

TEST(NameServerHostByAddress, TellsAnUnreachableNameServerFromAnAddressWithoutName) {
    const char address[4] = {10, 1, 2, 3};
    WithNameServer([&] { EXPECT_TRUE(FailsWith(11004, Winsock::gethostbyaddr(address, 4, 2))); });
    WithResolverSettings(PatientSettings, "", "here", [&] {
        EXPECT_TRUE(FailsWith(11002, Winsock::gethostbyaddr(address, 4, 2)));
    });
}

// The server might know the name, and another address than the interfaces have.
TEST(NameServerAndTheOwnName, IsATemporaryFailureWhereTheServerFails) {
    WithNameServer(
        [] {
            for (const char* asked : {"", "failing.example", "failing"}) {
                List list;
                EXPECT_TRUE(Returns(11002, Resolve(asked, "80", list))) << asked;
                EXPECT_EQ(list, nullptr);
                EXPECT_TRUE(FailsWith(11002, Winsock::gethostbyname(asked))) << asked;
            }
        },
        0, "failing.example");
}

TEST(NameServerAndTheOwnName, IsFoundInTheHostsFileWhateverTheServerDoes) {
    WithNameServer([] { EXPECT_EQ(AddressesOf(Resolved("", "80")), Texts{"10.4.4.4 80"}); }, 0,
                   "failing.example", "10.4.4.4 failing.example\n");
}

TEST(NameServerAndTheOwnName, IsWhatTheServerSays) {
    WithNameServer(
        [] {
            EXPECT_EQ(AddressesOf(Resolved("", "80")), Texts{"127.0.0.9 80"});
            EXPECT_NE(Winsock::gethostbyname(""), nullptr);
        },
        0, "four.example");
}

void ExpectInterfacesAddresses() {
    for (const char* name : {"", "LONELY.example"}) {
        EXPECT_EQ(AddressesOf(Resolved(name, "80")),
                  (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.1 80"}))
            << name;
        EXPECT_NE(Winsock::gethostbyname(name), nullptr) << name;
    }
}

// Where nobody says anything of the name, nobody knows it; none of these servers has to be awaited.
TEST(NameServerlessOwnName, HasTheInterfacesAddresses) {
    for (const char* settings : {"", "options timeout:30\n", PatientSettings,
                                 "nameserver 10.9.9.9\nnameserver fd00::9\n"}) {
        WithResolverSettings(settings, "", "lonely.example", [] {
            ExpectInterfacesAddresses();
            List list;
            EXPECT_TRUE(Returns(11002, Resolve("unknown.example", "80", list)));
        });
    }
}

TEST(NameServerlessOwnName, HasTheInterfacesAddressesThoughOneIsSetThatIsSilent) {
    WithResolverSettings(HastySettings, "", "lonely.example", [] {
        const NameServerPort silent;
        ExpectInterfacesAddresses();
    });
}

TEST(NameServerlessOwnName, HasTheInterfacesAddressesThoughOneIsSetThatRefuses) {
    WithNameServer(
        [] {
            EXPECT_EQ(AddressesOf(Resolved("", "80")),
                      (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.1 80"}));
            EXPECT_NE(Winsock::gethostbyname(""), nullptr);
        },
        0, "refused.example");
}

TEST(NameServerAndLocalhost, IsKnownWhateverTheServerSays) {
    const auto check = [] {
        EXPECT_EQ(AddressesOf(Resolved("localhost", "80")),
                  (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.1 80"}));
        EXPECT_NE(Winsock::gethostbyname("localhost"), nullptr);
    };
    WithNameServer(check);
    WithResolverSettings(HastySettings, "", "here", [&] {
        const NameServerPort silent;
        check();
    });
}

}  // namespace
}  // namespace Conformance

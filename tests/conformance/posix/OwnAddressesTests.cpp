// The addresses of this computer's own name.
#include <algorithm>
#include <cstring>
#include <fstream>

#include "NameFiles.h"
#include "NetworkInterface.h"
#include "conformance/NameScene.h"
#include "conformance/Provocation.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

const std::string Hosts =
    "127.0.0.1 localhost\n"
    "::1 localhost\n";

struct Network {
    NetworkInterface& first;
    NetworkInterface& second;
};

// A computer with two interfaces that is called lonely.example, or as the lines say.
void OnAComputerInANetwork(const std::string& lines,
                           const std::function<void(const Network&)>& scene,
                           const std::string& name = "lonely.example",
                           const std::string& sources = "files") {
    WithNames(
        Hosts + lines,
        [&] {
            NetworkInterface first("net1");
            NetworkInterface second("net2");
            if (!first.IsMade() || !second.IsMade()) GTEST_SKIP() << "no interfaces can be made";
            first.AddIpv4("192.168.7.1");
            second.AddIpv6("fd00::5");
            second.AddIpv6("fe80::7");
            scene({first, second});
        },
        name, sources);
}

// No file and no server knows it.
void OnALonelyComputer(const std::function<void(const Network&)>& scene,
                       const std::string& sources = "files") {
    OnAComputerInANetwork("", scene, "lonely.example", sources);
}

// Its addresses, those of IPv6 in their own order.
Texts InterfacesAddresses(const Network& network, const std::string& port) {
    const std::string scope = std::to_string(network.second.Index());
    return {"fd00:0:0:0:0:0:0:5%0 " + port, "fe80:0:0:0:0:0:0:7%" + scope + " " + port,
            "192.168.7.1 " + port};
}

Texts Ordered(Texts addresses) {
    std::sort(addresses.begin(),
              addresses.begin() + std::min<std::ptrdiff_t>(2, std::ssize(addresses)));
    return addresses;
}

// The name, all IPv4 addresses and the number of other names of a host; empty without one.
Texts HostOf(const char* name) {
    const Winsock::HostEntry* host = Winsock::gethostbyname(name);
    if (host == nullptr) return {};
    Texts texts = {host->name};
    for (char** next = host->addresses; *next != nullptr; ++next) {
        Winsock::AddressIpv4 address = Ipv4(0, 0, 0, 0, 0);
        std::memcpy(address.address, *next, sizeof address.address);
        texts.push_back(TextOf(&address));
    }
    return texts;
}

const char* const OwnNames[] = {"", "lonely.example", "LONELY.Example", "lonely", "Lonely"};

void ExpectInterfacesAddresses(const Network& network) {
    for (const char* host : OwnNames) {
        EXPECT_EQ(Ordered(AddressesOf(Resolved(host, "http"))), InterfacesAddresses(network, "80"))
            << host;
        EXPECT_EQ(HostOf(host), (Texts{"lonely.example", "192.168.7.1 0"})) << host;
    }
}

TEST(OwnAddressesList, HasTheInterfacesAddressesIpv6First) {
    OnALonelyComputer(ExpectInterfacesAddresses);
}

TEST(OwnAddressesList, HasTheWantedFamilyWithTypeAndProtocol) {
    OnALonelyComputer([](const Network&) {
        const Winsock::AddressInfo hints = Hints(2, 2, 17);
        const List list = Resolved("", nullptr, &hints);
        EXPECT_EQ(AddressesOf(list), Texts{"192.168.7.1 0"});
        EXPECT_EQ(list->type, 2);
        EXPECT_EQ(list->protocol, 17);
    });
}

TEST(OwnAddressesList, LeavesOutInterfacesThatAreDown) {
    OnALonelyComputer([](const Network& network) {
        network.second.AddIpv4("192.168.8.1");
        network.second.TakeDown();
        EXPECT_EQ(AddressesOf(Resolved("", "1")), Texts{"192.168.7.1 1"});
    });
}

TEST(OwnAddressesList, IsLoopbackWhereThereIsNothingElse) {
    WithNames(
        Hosts,
        [] {
            EXPECT_EQ(AddressesOf(Resolved("", "80")),
                      (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.1 80"}));
        },
        "lonely");
}

TEST(OwnAddressesList, HasNoneOfAFamilyThatTheComputerDoesNotSpeak) {
    WithNames(
        Hosts,
        [] {
            std::ofstream("/proc/sys/net/ipv6/conf/all/disable_ipv6") << 1;
            const Winsock::AddressInfo ipv6 = Hints(23, 1);
            List list;
            EXPECT_TRUE(Returns(11001, Resolve("", "80", list, &ipv6)));
            EXPECT_EQ(AddressesOf(Resolved("", "80")), Texts{"127.0.0.1 80"});
        },
        "lonely");
}

TEST(OwnAddressesList, IsFoundThoughNoServerCanBeReached) {
    OnALonelyComputer(
        [](const Network& network) {
            network.second.TakeDown();
            EXPECT_EQ(AddressesOf(Resolved("lonely", "80")), Texts{"192.168.7.1 80"});
            network.first.TakeDown();
            EXPECT_FALSE(AddressesOf(Resolved("lonely", "80")).empty());
        },
        "files dns");
}

TEST(OwnAddressesList, IsTheResolversAnswerWhereThereIsOne) {
    WithNames("10.4.4.4 here.example here\n", [] {
        for (const char* host : {"", "here", "HERE", "here.example"}) {
            EXPECT_EQ(AddressesOf(Resolved(host, "80")), Texts{"10.4.4.4 80"}) << host;
        }
    });
}

TEST(OwnAddressesList, DoesNotStandInForAnUnknownServiceOrName) {
    OnALonelyComputer([](const Network&) {
        List list;
        EXPECT_TRUE(Returns(10109, Resolve("", "no-such-service", list)));
        EXPECT_TRUE(Returns(11001, Resolve("lonel", "80", list)));
        EXPECT_TRUE(Returns(11001, Resolve("lonely.exampl", "80", list)));
        EXPECT_TRUE(Returns(11001, Resolve("example", "80", list)));
    });
}

TEST(OwnAddressesNameInTheHostsFile, IsTheInterfacesAddressesWhereItIsLoopbackThere) {
    for (const char* lines :
         {"127.0.1.1 lonely.example lonely\n", "127.0.0.1 lonely.example lonely\n",
          "::1 lonely.example lonely\n127.0.1.1 lonely.example lonely\n"}) {
        OnAComputerInANetwork(lines, ExpectInterfacesAddresses);
    }
}

TEST(OwnAddressesNameInTheHostsFile, HasTheWantedFamilyOfTheInterfaces) {
    OnAComputerInANetwork("127.0.1.1 lonely.example lonely\n", [](const Network& network) {
        const Winsock::AddressInfo ipv4 = Hints(2, 1, 6);
        const Winsock::AddressInfo ipv6 = Hints(23, 1, 6);
        EXPECT_EQ(AddressesOf(Resolved("", "80", &ipv4)), Texts{"192.168.7.1 80"});
        EXPECT_EQ(AddressesOf(Resolved("", "80", &ipv6)).size(), 2U);
        network.first.TakeDown();
        EXPECT_EQ(AddressesOf(Resolved("", "80", &ipv4)), Texts{"127.0.1.1 80"});
        EXPECT_EQ(HostOf(""), (Texts{"lonely.example", "127.0.1.1 0"}));
    });
}

TEST(OwnAddressesNameInTheHostsFile, IsWhatItSaysWhereAnAddressIsNotLoopback) {
    OnAComputerInANetwork("127.0.1.1 lonely\n10.4.4.4 lonely\n", [](const Network&) {
        Texts addresses = AddressesOf(Resolved("lonely", "80"));
        std::sort(addresses.begin(), addresses.end());
        EXPECT_EQ(addresses, (Texts{"10.4.4.4 80", "127.0.1.1 80"}));
        EXPECT_EQ(HostOf("lonely").size(), 3U);
    });
}

TEST(OwnAddressesNameInTheHostsFile, IsWhatItSaysWhereTheComputerHasNothingButLoopback) {
    WithNames(
        "127.0.1.1 lonely.example lonely\n",
        [] {
            for (const char* host : OwnNames) {
                EXPECT_EQ(AddressesOf(Resolved(host, "80")), Texts{"127.0.1.1 80"}) << host;
                EXPECT_EQ(HostOf(host), (Texts{"lonely.example", "127.0.1.1 0"})) << host;
            }
        },
        "lonely.example");
}

TEST(OwnAddressesNameInTheHostsFile, IsNoOtherName) {
    OnAComputerInANetwork("127.0.1.1 other lonel lonely.exampl\n", [](const Network&) {
        for (const char* host : {"other", "lonel", "lonely.exampl"}) {
            EXPECT_EQ(AddressesOf(Resolved(host, "80")), Texts{"127.0.1.1 80"}) << host;
            EXPECT_EQ(HostOf(host), (Texts{"other", "127.0.1.1 0"})) << host;
        }
    });
}

// Whoever calls a computer so wants it to have this address.
TEST(OwnAddressesNameThatIsAnAddress, IsThatAddress) {
    const auto check = [](const char* name, const char* address) {
        OnAComputerInANetwork(
            "",
            [=](const Network&) {
                EXPECT_EQ(AddressesOf(Resolved("", "80")), Texts{address});
                EXPECT_EQ(AddressesOf(Resolved(name, "80")), Texts{address});
            },
            name);
    };
    check("127.0.0.1", "127.0.0.1 80");
    check("::1", "0:0:0:0:0:0:0:1%0 80");
    OnAComputerInANetwork(
        "",
        [](const Network&) {
            EXPECT_EQ(HostOf("127.0.0.1"), (Texts{"127.0.0.1", "127.0.0.1 0"}));
        },
        "127.0.0.1");
}

void ExpectLoopback(const char* host) {
    const Winsock::AddressInfo ipv4 = Hints(2, 1);
    const Winsock::AddressInfo ipv6 = Hints(23, 1);
    EXPECT_EQ(AddressesOf(Resolved(host, "80")), (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.1 80"}));
    EXPECT_EQ(AddressesOf(Resolved(host, nullptr, &ipv4)), Texts{"127.0.0.1 0"});
    EXPECT_EQ(AddressesOf(Resolved(host, "http", &ipv6)), Texts{"0:0:0:0:0:0:0:1%0 80"});
}

TEST(OwnAddressesLocalhost, IsTheLoopbackInterfaceWhateverTheComputerIsCalled) {
    OnAComputerInANetwork(
        "", [](const Network&) { ExpectLoopback("localhost"); }, "localhost");
}

TEST(OwnAddressesLocalhost, IsKnownThoughNoTableHasIt) {
    for (const char* sources : {"files", "dns", "files dns"}) {
        WithNames(
            "10.1.1.1 other\n",
            [] {
                for (const char* host : {"localhost", "LocalHost"}) {
                    ExpectLoopback(host);
                    EXPECT_EQ(HostOf(host), (Texts{host, "127.0.0.1 0"}));
                    EXPECT_TRUE(Succeeds(0));
                }
                EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname("with blank")));
            },
            "here", sources);
    }
}

TEST(OwnAddressesLocalhost, IsWhatTheTableSays) {
    WithNames("127.0.0.7 localhost\n", [] {
        EXPECT_EQ(AddressesOf(Resolved("localhost", "80")), Texts{"127.0.0.7 80"});
        EXPECT_EQ(HostOf("localhost"), (Texts{"localhost", "127.0.0.7 0"}));
    });
}

TEST(OwnAddressesLocalhost, DoesNotMakeAServiceKnown) {
    WithNames("", [] {
        List list;
        EXPECT_TRUE(Returns(10109, Resolve("localhost", "no-such-service", list)));
    });
}

}  // namespace
}  // namespace Conformance

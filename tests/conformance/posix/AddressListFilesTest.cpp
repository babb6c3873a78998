// Lists of addresses of names that the system finds in files that the test provides.
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <arpa/inet.h>
#include <linux/sockios.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <thread>

#include "FailingAllocations.h"
#include "NameFiles.h"
#include "conformance/NameScene.h"
#include "conformance/Provocation.h"

namespace Conformance {
namespace {

const char* const Hosts =
    "127.0.0.1 localhost\n"
    "127.0.0.1 both.example both\n"
    "::1 both.example both\n"
    "10.9.8.7 four.example\n"
    "fd00::7 six.example\n"
    "10.5.5.5 twice.example\n"
    "10.6.6.6 twice.example\n"
    "10.5.5.5 twice.example\n";

TEST(AddressListOfName, HasEachAddressOnceInTheSystemsOrder) {
    WithNames(Hosts, [] {
        EXPECT_EQ(AddressesOf(Resolved("both", "80")),
                  (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.1 80"}));
        EXPECT_EQ(AddressesOf(Resolved("four.example", "80")), Texts{"10.9.8.7 80"});
        EXPECT_EQ(AddressesOf(Resolved("six.example", "http")), Texts{"fd00:0:0:0:0:0:0:7%0 80"});
        EXPECT_EQ(AddressesOf(Resolved("twice.example", nullptr)),
                  (Texts{"10.5.5.5 0", "10.6.6.6 0"}));
    });
}

TEST(AddressListOfName, HasTheAddressesOfTheWantedFamilyOnly) {
    WithNames(Hosts, [] {
        const Winsock::AddressInfo ipv4 = Hints(2, 2, 17);
        const Winsock::AddressInfo ipv6 = Hints(23, 1, 6);
        const List four = Resolved("both", "80", &ipv4);
        EXPECT_EQ(AddressesOf(four), Texts{"127.0.0.1 80"});
        EXPECT_EQ(four->type, 2);
        EXPECT_EQ(four->protocol, 17);
        EXPECT_EQ(AddressesOf(Resolved("both", "80", &ipv6)), Texts{"0:0:0:0:0:0:0:1%0 80"});
    });
}

TEST(AddressListOfName, MayBeLong) {
    std::string hosts;
    Texts expected;
    for (int index = 1; index <= 35; ++index) {
        const std::string address = "10.0.0." + std::to_string(index);
        hosts += address + " many\n";
        expected.push_back(address + " 7");
    }
    WithNames(hosts, [&] {
        Texts addresses = AddressesOf(Resolved("many", "7"));
        std::sort(addresses.begin(), addresses.end());
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(addresses, expected);
    });
}

TEST(AddressListOfName, IsEmptyForANameThatNobodyKnows) {
    WithNames(Hosts, [] {
        for (const std::string host :
             {"unknown.example", "127.0.0.1:80", "with blank", "1.2.3.4.5", "256.1.1.1",
              "::1::", "\xFF\xFE\x80", "\xC3\xA4rger", ".", "-", "fe80::1%", "fe80::1%nowhere"}) {
            List list;
            EXPECT_TRUE(Returns(11001, Resolve(host.c_str(), "80", list))) << host;
            EXPECT_EQ(list, nullptr);
        }
    });
}

TEST(AddressListOfName, IsEmptyForBrokenLiteralsInBrackets) {
    WithNames(Hosts, [] {
        for (const char* host : {"[::1", "[", "[]", "[127.0.0.1]", "[::1]x", "[::1]:", "[::1]:x",
                                 "[::1]]", "[[::1]]", "[localhost]", "[::1x]", "[ ::1]"}) {
            List list;
            EXPECT_TRUE(Returns(11001, Resolve(host, "80", list))) << host;
            EXPECT_EQ(list, nullptr);
        }
    });
}

TEST(AddressListOfName, IsEmptyForAStar) {
    WithNames(Hosts, [] {
        List list;
        EXPECT_TRUE(Returns(11001, Resolve("*", "80", list)));
        EXPECT_TRUE(Returns(11001, Resolve("*", nullptr, list)));
        EXPECT_TRUE(Returns(10109, Resolve("127.0.0.1", "*", list)));
        EXPECT_TRUE(Returns(10109, Resolve(nullptr, "*", list)));
    });
}

TEST(AddressListOfName, IsEmptyForANameThatIsTooLong) {
    WithNames(Hosts, [] {
        for (const std::size_t length : {64U, 256U, 1025U, 5000U, 100'000U}) {
            for (const char letter : {'a', '.', '1', ':'}) {
                List list;
                const std::string host(length, letter);
                EXPECT_TRUE(Returns(11001, Resolve(host.c_str(), "80", list))) << length << letter;
            }
        }
    });
}

TEST(AddressListOfName, TellsAnUnreachableNameServerFromAnUnknownName) {
    WithNames(
        Hosts,
        [] {
            List list;
            EXPECT_TRUE(Returns(11002, Resolve("unknown.example", "80", list)));
            EXPECT_EQ(list, nullptr);
        },
        "here", "files dns");
}

TEST(AddressListOfName, IsFoundUnderAStormOfSignals) {
    WithNames(Hosts, [] {
        const SignalStorm storm({}, 1);
        while (SignalStorm::SignalCount() < 100) {
            EXPECT_EQ(AddressesOf(Resolved("four.example", "http")), Texts{"10.9.8.7 80"});
        }
    });
}

TEST(AddressListOfName, IsEachThreadsOwn) {
    WithNames(Hosts, [] {
        std::vector<std::thread> threads;
        for (int index = 0; index < 16; ++index) {
            const bool six = index % 2 == 0;
            threads.emplace_back([six] {
                for (int round = 0; round < 200; ++round) {
                    List list;
                    const char* const host = six ? "six.example" : "four.example";
                    EXPECT_EQ(Resolve(host, "80", list), 0);
                    EXPECT_EQ(Winsock::WSAGetLastError(), 0);
                    EXPECT_EQ(AddressesOf(list),
                              Texts{six ? "fd00:0:0:0:0:0:0:7%0 80" : "10.9.8.7 80"});
                    EXPECT_EQ(Resolve("unknown.example", "80", list), 11001);
                    EXPECT_EQ(Winsock::WSAGetLastError(), 11001);
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    });
}

// Fails each allocation in turn until none is left to fail; returns how many there were.
unsigned int FailEachAllocation(const char* host, const char* service) {
    for (unsigned int successes = 0; successes < 100; ++successes) {
        Winsock::AddressInfo unset = {};
        Winsock::AddressInfo* result = &unset;
        int error = 0;
        {
            const FailingAllocations noMemory(successes);
            error = Winsock::getaddrinfo(host, service, nullptr, &result);
        }
        const List list(result);
        if (error == 0) return successes;
        EXPECT_TRUE(Returns(8, error)) << successes;
        EXPECT_EQ(list, nullptr);
    }
    ADD_FAILURE() << "never enough memory";
    return 0;
}

TEST(AddressListOfName, WithoutMemoryIsAnError) {
    WithNames(
        Hosts,
        [] {
            EXPECT_EQ(FailEachAllocation("127.0.0.1", "80"), 1U);
            EXPECT_EQ(FailEachAllocation("both.example", "80"), 2U);
            EXPECT_GT(FailEachAllocation("[2001:db8:0001:0002:0003::1]", "80"), 1U);
            EXPECT_GT(FailEachAllocation("", "http"), 2U);
        },
        "lonely");
}

// The request that gives an interface an IPv6 address, as the system reads it.
struct Ipv6Request {
    in6_addr address;
    std::uint32_t prefixLength;
    int interfaceIndex;
};

class Interface {
public:
    // An interface that leads nowhere and has no address but those that it is given.
    explicit Interface(const char* name) {
        std::strcpy(request_.ifr_name, name);
        made_ = ::ioctl(ipv4_, SIOCBRADDBR, name) == 0 && GiveNoAddress() && Raise();
    }
    ~Interface() {
        ::close(ipv4_);
        ::close(ipv6_);
    }
    Interface(const Interface&) = delete;
    Interface& operator=(const Interface&) = delete;

    bool IsMade() const { return made_; }
    unsigned int Index() const { return ::if_nametoindex(request_.ifr_name); }

    void AddIpv4(const char* text) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        ::inet_pton(AF_INET, text, &address.sin_addr);
        std::memcpy(&request_.ifr_addr, &address, sizeof address);
        EXPECT_EQ(::ioctl(ipv4_, SIOCSIFADDR, &request_), 0);
    }
    void AddIpv6(const char* text) {
        Ipv6Request request = {};
        ::inet_pton(AF_INET6, text, &request.address);
        request.prefixLength = 64;
        request.interfaceIndex = static_cast<int>(Index());
        EXPECT_EQ(::ioctl(ipv6_, SIOCSIFADDR, &request), 0);
    }
    void TakeDown() {
        request_.ifr_flags = 0;
        EXPECT_EQ(::ioctl(ipv4_, SIOCSIFFLAGS, &request_), 0);
    }

private:
    bool GiveNoAddress() const {
        const std::string folder = "/proc/sys/net/ipv6/conf/";
        std::ofstream mode(folder + request_.ifr_name + "/addr_gen_mode");
        mode << 1 << std::flush;
        return mode.good();
    }
    bool Raise() {
        request_.ifr_flags = IFF_UP;
        return ::ioctl(ipv4_, SIOCSIFFLAGS, &request_) == 0;
    }

    int ipv4_ = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    int ipv6_ = ::socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq request_ = {};
    bool made_ = false;
};

// A computer with two interfaces that no file and no server knows.
void OnALonelyComputer(const std::function<void(Interface&, Interface&)>& scene,
                       const std::string& sources = "files") {
    WithNames(
        Hosts,
        [&] {
            Interface first("net1");
            Interface second("net2");
            if (!first.IsMade() || !second.IsMade()) GTEST_SKIP() << "no interfaces can be made";
            first.AddIpv4("192.168.7.1");
            second.AddIpv6("fd00::5");
            second.AddIpv6("fe80::7");
            scene(first, second);
        },
        "lonely.example", sources);
}

TEST(AddressListOfTheOwnName, HasTheInterfacesAddressesIpv6First) {
    OnALonelyComputer([](Interface&, Interface& second) {
        const std::string scope = std::to_string(second.Index());
        for (const char* host : {"", "lonely.example", "LONELY.Example", "lonely", "Lonely"}) {
            Texts addresses = AddressesOf(Resolved(host, "http"));
            std::sort(addresses.begin(), addresses.begin() + 2);
            EXPECT_EQ(addresses, (Texts{"fd00:0:0:0:0:0:0:5%0 80",
                                        "fe80:0:0:0:0:0:0:7%" + scope + " 80", "192.168.7.1 80"}))
                << host;
        }
    });
}

TEST(AddressListOfTheOwnName, HasTheWantedFamilyWithTypeAndProtocol) {
    OnALonelyComputer([](Interface&, Interface&) {
        const Winsock::AddressInfo hints = Hints(2, 2, 17);
        const List list = Resolved("", nullptr, &hints);
        EXPECT_EQ(AddressesOf(list), Texts{"192.168.7.1 0"});
        EXPECT_EQ(list->type, 2);
        EXPECT_EQ(list->protocol, 17);
    });
}

TEST(AddressListOfTheOwnName, LeavesOutInterfacesThatAreDown) {
    OnALonelyComputer([](Interface&, Interface& second) {
        second.AddIpv4("192.168.8.1");
        second.TakeDown();
        EXPECT_EQ(AddressesOf(Resolved("", "1")), Texts{"192.168.7.1 1"});
    });
}

TEST(AddressListOfTheOwnName, IsLoopbackWhereThereIsNothingElse) {
    WithNames(
        Hosts,
        [] {
            EXPECT_EQ(AddressesOf(Resolved("", "80")),
                      (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.1 80"}));
        },
        "lonely");
}

TEST(AddressListOfTheOwnName, IsFoundThoughNoServerCanBeReached) {
    OnALonelyComputer(
        [](Interface& first, Interface& second) {
            second.TakeDown();
            EXPECT_EQ(AddressesOf(Resolved("lonely", "80")), Texts{"192.168.7.1 80"});
            first.TakeDown();
            EXPECT_FALSE(AddressesOf(Resolved("lonely", "80")).empty());
        },
        "files dns");
}

TEST(AddressListOfTheOwnName, IsTheResolversAnswerWhereThereIsOne) {
    WithNames("10.4.4.4 here.example here\n", [] {
        for (const char* host : {"", "here", "HERE", "here.example"}) {
            EXPECT_EQ(AddressesOf(Resolved(host, "80")), Texts{"10.4.4.4 80"}) << host;
        }
    });
}

TEST(AddressListOfTheOwnName, DoesNotStandInForAnUnknownServiceOrName) {
    OnALonelyComputer([](Interface&, Interface&) {
        List list;
        EXPECT_TRUE(Returns(10109, Resolve("", "no-such-service", list)));
        EXPECT_TRUE(Returns(11001, Resolve("lonel", "80", list)));
        EXPECT_TRUE(Returns(11001, Resolve("lonely.exampl", "80", list)));
        EXPECT_TRUE(Returns(11001, Resolve("example", "80", list)));
    });
}

TEST(NameTextOfAddress, IsTheHostsName) {
    WithNames(Hosts, [] {
        const Winsock::AddressIpv4 address = Ipv4(10, 9, 8, 7, 80);
        char host[100];
        char service[100];
        EXPECT_TRUE(Returns(0, Winsock::getnameinfo(&address, sizeof address, host, sizeof host,
                                                    service, sizeof service, 0)));
        EXPECT_STREQ(host, "four.example");
        EXPECT_STREQ(service, "http");
        EXPECT_TRUE(Returns(122, Winsock::getnameinfo(&address, sizeof address, host, 12, service,
                                                      sizeof service, 0)));
    });
}

TEST(NameTextOfAddress, ConsistsOfNumbersWithoutAName) {
    WithNames(Hosts, [] {
        Winsock::AddressIpv6 address = LoopbackIpv6(4711);
        address.address[0] = 0xFE;
        address.address[1] = 0x80;
        address.scope = 1;
        char host[100];
        char service[100];
        EXPECT_TRUE(Returns(0, Winsock::getnameinfo(&address, sizeof address, host, sizeof host,
                                                    service, sizeof service, 0)));
        EXPECT_STREQ(host, "fe80::1%1");
        EXPECT_STREQ(service, "4711");
    });
}

}  // namespace
}  // namespace Conformance

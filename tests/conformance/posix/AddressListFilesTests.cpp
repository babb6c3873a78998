// Lists of addresses of names that the system finds in files that the test provides.
#include <algorithm>
#include <thread>

#include "NameFiles.h"
#include "conformance/NameScene.h"
#include "conformance/Provocation.h"
#include "support/FailingAllocations.h"

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

TEST(AddressListFilesOfAName, HasEachAddressOnceInTheSystemsOrder) {
    WithNames(Hosts, [] {
        EXPECT_EQ(AddressesOf(Resolved("both", "80")),
                  (Texts{"0:0:0:0:0:0:0:1%0 80", "127.0.0.1 80"}));
        EXPECT_EQ(AddressesOf(Resolved("four.example", "80")), Texts{"10.9.8.7 80"});
        EXPECT_EQ(AddressesOf(Resolved("six.example", "http")), Texts{"fd00:0:0:0:0:0:0:7%0 80"});
        EXPECT_EQ(AddressesOf(Resolved("twice.example", nullptr)),
                  (Texts{"10.5.5.5 0", "10.6.6.6 0"}));
    });
}

TEST(AddressListFilesOfAName, HasTheAddressesOfTheWantedFamilyOnly) {
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

TEST(AddressListFilesOfAName, MayBeLong) {
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

TEST(AddressListFilesOfAName, IsEmptyForANameThatNobodyKnows) {
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

TEST(AddressListFilesOfAName, IsEmptyForBrokenLiteralsInBrackets) {
    WithNames(Hosts, [] {
        for (const char* host : {"[::1", "[", "[]", "[127.0.0.1]", "[::1]x", "[::1]:", "[::1]:x",
                                 "[::1]]", "[[::1]]", "[localhost]", "[::1x]", "[ ::1]"}) {
            List list;
            EXPECT_TRUE(Returns(11001, Resolve(host, "80", list))) << host;
            EXPECT_EQ(list, nullptr);
        }
    });
}

TEST(AddressListFilesOfAName, IsEmptyForAStar) {
    WithNames(Hosts, [] {
        List list;
        EXPECT_TRUE(Returns(11001, Resolve("*", "80", list)));
        EXPECT_TRUE(Returns(11001, Resolve("*", nullptr, list)));
        EXPECT_TRUE(Returns(10109, Resolve("127.0.0.1", "*", list)));
        EXPECT_TRUE(Returns(10109, Resolve(nullptr, "*", list)));
    });
}

TEST(AddressListFilesOfAName, IsEmptyForANameThatIsTooLong) {
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

TEST(AddressListFilesOfAName, TellsAnUnreachableNameServerFromAnUnknownName) {
    WithNames(
        Hosts,
        [] {
            List list;
            EXPECT_TRUE(Returns(11002, Resolve("unknown.example", "80", list)));
            EXPECT_EQ(list, nullptr);
        },
        "here", "files dns");
}

TEST(AddressListFilesOfAName, IsFoundUnderAStormOfSignals) {
    WithNames(Hosts, [] {
        const SignalStorm storm({}, 1);
        while (SignalStorm::SignalCount() < 100) {
            EXPECT_EQ(AddressesOf(Resolved("four.example", "http")), Texts{"10.9.8.7 80"});
        }
    });
}

TEST(AddressListFilesOfAName, IsEachThreadsOwn) {
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
    for (unsigned int successes = 0; successes < 1000; ++successes) {
        Winsock::AddressInfo unset = {};
        Winsock::AddressInfo* result = &unset;
        int error = 0;
        {
            const Support::FailingAllocations noMemory(successes);
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

TEST(AddressListFilesOfAName, WithoutMemoryIsAnError) {
    WithNames(
        Hosts,
        [] {
            // The memory of one entry is there already.
            EXPECT_EQ(FailEachAllocation("127.0.0.1", "80"), 0U);
            EXPECT_EQ(FailEachAllocation("both.example", "80"), 1U);
            EXPECT_GT(FailEachAllocation("[2001:db8:0001:0002:0003::1]", "80"), 1U);
            EXPECT_GT(FailEachAllocation("", "http"), 2U);
        },
        "lonely");
}

// Many: as many as an answer of the network may bring, of which the list keeps an index.
constexpr int ManyAddresses = 40;

// So many addresses twice each, the second time after all others.
std::string HostsWithTwice(int addresses) {
    std::string hosts;
    for (int line = 0; line < 2 * addresses; ++line)
        hosts += "10.0.0." + std::to_string(line % addresses + 1) + " many.example\n";
    return hosts;
}

void ExpectEachOnce(int addresses) {
    Texts expected;
    for (int number = 1; number <= addresses; ++number)
        expected.push_back("10.0.0." + std::to_string(number) + " 80");
    std::sort(expected.begin(), expected.end());
    Texts found = AddressesOf(Resolved("many.example", "80"));
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, expected);
}

TEST(AddressListFilesOfAName, HoldsEachOfManyAddressesOnce) {
    WithNames(HostsWithTwice(ManyAddresses), [] {
        ExpectEachOnce(ManyAddresses);
        EXPECT_GT(FailEachAllocation("many.example", "80"), 0U + ManyAddresses);
    });
}

// The index is made when the list has grown to sixteen.
TEST(AddressListFilesOfAName, HoldsEachOnceHoweverManyCameBeforeTheFirstAgain) {
    for (int addresses = 14; addresses < 19; ++addresses)
        WithNames(HostsWithTwice(addresses), [addresses] { ExpectEachOnce(addresses); });
}

TEST(AddressListFilesNameOfAnAddress, IsTheHostsName) {
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

TEST(AddressListFilesNameOfAnAddress, ConsistsOfNumbersWithoutAName) {
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

// Names as the system finds them in files that the test provides.
#include <cstring>
#include <sstream>
#include <thread>
#include <vector>

#include "NameFiles.h"
#include "conformance/Scene.h"
#include "support/FailingAllocations.h"

namespace Conformance {
namespace {

const char* const Hosts =
    "127.0.0.1 localhost\n"
    "10.1.2.3 alpha.example alpha first\n"
    "10.9.8.7 beta.example\n"
    "fd00::7 six.example\n";

std::vector<std::string> AddressesOf(const Winsock::HostEntry* entry) {
    std::vector<std::string> texts;
    for (char** next = entry->addresses; *next != nullptr; ++next) {
        std::ostringstream text;
        for (int index = 0; index < entry->addressLength; ++index) {
            const auto octet = static_cast<unsigned char>((*next)[index]);
            text << (index > 0 ? "." : "") << unsigned{octet};
        }
        texts.push_back(text.str());
    }
    return texts;
}

std::vector<std::string> AliasesOf(const Winsock::HostEntry* entry) {
    std::vector<std::string> texts;
    for (char** next = entry->aliases; *next != nullptr; ++next)
        texts.emplace_back(*next);
    return texts;
}

using Texts = std::vector<std::string>;

TEST(NameFilesHostByName, AnswersNameAliasesAndAddress) {
    WithNames(Hosts, [] {
        const Winsock::HostEntry* entry = Winsock::gethostbyname("alpha");
        ASSERT_NE(entry, nullptr);
        EXPECT_TRUE(Succeeds(0));
        EXPECT_STREQ(entry->name, "alpha.example");
        EXPECT_EQ(AliasesOf(entry), (Texts{"alpha", "first"}));
        EXPECT_EQ(entry->addressType, 2);
        EXPECT_EQ(entry->addressLength, 4);
        EXPECT_EQ(AddressesOf(entry), Texts{"10.1.2.3"});
    });
}

TEST(NameFilesHostByName, TakesAnEarlierErrorBackWhenItFinds) {
    WithNames(Hosts, [] {
        EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname("unknown.example")));
        EXPECT_NE(Winsock::gethostbyname("alpha"), nullptr);
        EXPECT_TRUE(Succeeds(0));
    });
}

TEST(NameFilesHostByName, KnowsLocalhost) {
    WithNames(Hosts, [] {
        const Winsock::HostEntry* entry = Winsock::gethostbyname("localhost");
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(AddressesOf(entry), Texts{"127.0.0.1"});
    });
}

TEST(NameFilesHostByName, TakesADottedTextForTheAddressThatItIs) {
    WithNames(Hosts, [] {
        const Winsock::HostEntry* entry = Winsock::gethostbyname("192.0.2.77");
        ASSERT_NE(entry, nullptr);
        EXPECT_STREQ(entry->name, "192.0.2.77");
        EXPECT_EQ(AddressesOf(entry), Texts{"192.0.2.77"});
    });
}

TEST(NameFilesHostByName, DoesNotFindWhatIsNoName) {
    WithNames(Hosts, [] {
        for (const std::string name :
             {"unknown.example", "::1", "with blank", "\xFF\xFE\x80", "\xC3\xA4rger"}) {
            EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname(name.c_str()))) << name;
        }
    });
}

TEST(NameFilesHostByName, DoesNotFindNamesThatAreTooLong) {
    WithNames(Hosts, [] {
        EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname(std::string(64, 'a').c_str())));
        EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname(std::string(256, 'a').c_str())));
        EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname(std::string(5000, 'a').c_str())));
        EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname(std::string(5000, '.').c_str())));
    });
}

TEST(NameFilesHostByName, TellsAnUnreachableNameServerFromAnUnknownName) {
    WithNames(
        Hosts, [] { EXPECT_TRUE(FailsWith(11002, Winsock::gethostbyname("unknown.example"))); },
        "here", "files dns");
}

TEST(NameFilesHostByName, DoesNotAskAServerForANameThatIsTooLong) {
    WithNames(
        Hosts,
        [] {
            EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname(std::string(5000, 'a').c_str())));
        },
        "here", "files dns");
}

TEST(NameFilesHostByName, WithoutANameIsThisComputer) {
    WithNames("10.4.4.4 here.example here\n", [] {
        for (const char* name : {static_cast<const char*>(nullptr), ""}) {
            const Winsock::HostEntry* entry = Winsock::gethostbyname(name);
            ASSERT_NE(entry, nullptr);
            EXPECT_STREQ(entry->name, "here.example");
            EXPECT_EQ(AddressesOf(entry), Texts{"10.4.4.4"});
        }
    });
}

TEST(NameFilesHostByName, AComputerThatNobodyKnowsKnowsItself) {
    WithNames(
        Hosts,
        [] {
            for (const char* name : {"", "lonely.example", "LONELY.Example", "lonely"}) {
                const Winsock::HostEntry* entry = Winsock::gethostbyname(name);
                ASSERT_NE(entry, nullptr) << name;
                EXPECT_TRUE(Succeeds(0));
                EXPECT_STREQ(entry->name, "lonely.example");
                EXPECT_EQ(AliasesOf(entry), Texts{});
                EXPECT_EQ(entry->addressType, 2);
                EXPECT_EQ(entry->addressLength, 4);
                EXPECT_EQ(AddressesOf(entry), Texts{"127.0.0.1"});
            }
            EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname("lonel")));
        },
        "lonely.example");
}

TEST(NameFilesHostByName, WithoutMemoryAComputerThatNobodyKnowsIsNotFound) {
    WithNames(
        Hosts,
        [] {
            const Winsock::HostEntry* entry = nullptr;
            {
                const Support::FailingAllocations noMemory;
                entry = Winsock::gethostbyname("");
            }
            EXPECT_TRUE(FailsWith(11003, entry));
        },
        "lonely.example");
}

TEST(NameFilesHostByName, AnswersAnyNumberOfAddressesAndAliases) {
    std::string hosts;
    Texts addresses;
    for (int index = 0; index < 1000; ++index) {
        std::ostringstream address;
        address << "10.0." << index / 250 << '.' << index % 250 + 1;
        addresses.push_back(address.str());
        hosts += addresses.back() + " many alias" + std::to_string(index) + "\n";
    }
    WithNames(hosts, [&] {
        const Winsock::HostEntry* entry = Winsock::gethostbyname("many");
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(AddressesOf(entry), addresses);
        EXPECT_EQ(AliasesOf(entry).size(), 1000U);
    });
}

TEST(NameFilesHostByName, EntriesAreEachThreadsOwn) {
    WithNames(Hosts, [] {
        const Winsock::HostEntry* mine = Winsock::gethostbyname("alpha");
        ASSERT_NE(mine, nullptr);
        std::thread([mine] {
            const Winsock::HostEntry* theirs = Winsock::gethostbyname("beta.example");
            ASSERT_NE(theirs, nullptr);
            EXPECT_NE(theirs, mine);
            EXPECT_EQ(AddressesOf(theirs), Texts{"10.9.8.7"});
        }).join();
        EXPECT_STREQ(mine->name, "alpha.example");
        EXPECT_EQ(AddressesOf(mine), Texts{"10.1.2.3"});
    });
}

TEST(NameFilesHostByAddress, AnswersTheName) {
    WithNames(Hosts, [] {
        const char address[4] = {10, 9, 8, 7};
        const Winsock::HostEntry* entry = Winsock::gethostbyaddr(address, 4, 2);
        ASSERT_NE(entry, nullptr);
        EXPECT_TRUE(Succeeds(0));
        EXPECT_STREQ(entry->name, "beta.example");
        EXPECT_EQ(AddressesOf(entry), Texts{"10.9.8.7"});
    });
}

TEST(NameFilesHostByAddress, AnswersTheNameOfAnIpv6AddressInWinsocksFamily) {
    WithNames(Hosts, [] {
        const unsigned char bytes[16] = {0xFD, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7};
        char address[16];
        std::memcpy(address, bytes, sizeof address);
        const Winsock::HostEntry* entry = Winsock::gethostbyaddr(address, 16, 23);
        ASSERT_NE(entry, nullptr);
        EXPECT_STREQ(entry->name, "six.example");
        EXPECT_EQ(entry->addressType, 23);
        EXPECT_EQ(entry->addressLength, 16);
    });
}

TEST(NameFilesHostByAddress, AnAddressWithoutANameHasNoData) {
    WithNames(Hosts, [] {
        const char address[4] = {10, 77, 77, 77};
        EXPECT_TRUE(FailsWith(11004, Winsock::gethostbyaddr(address, 4, 2)));
    });
}

}  // namespace
}  // namespace Conformance

#include <cstring>
#include <sstream>
#include <thread>
#include <vector>

#include "Provocation.h"
#include "Scene.h"

namespace Conformance {
namespace {

struct DottedRow {
    const char* text;
    unsigned int address;

    friend void PrintTo(const DottedRow& row, std::ostream* stream) { *stream << row.text; }
};

class DottedText : public testing::TestWithParam<DottedRow> {};

TEST_P(DottedText, IsReadAsTheSystemReadsIt) {
    EXPECT_EQ(Winsock::inet_addr(GetParam().text), GetParam().address) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DottedText,
    testing::Values(DottedRow{"127.0.0.1", 0x0100007F}, DottedRow{"1.2.3.4", 0x04030201},
                    DottedRow{"0.0.0.0", 0}, DottedRow{"255.255.255.255", 0xFFFFFFFF},
                    DottedRow{"1", 0x01000000}, DottedRow{"1.2", 0x02000001},
                    DottedRow{"1.2.3", 0x03000201}, DottedRow{"1.65535", 0xFFFF0001},
                    DottedRow{"0x7f.0.0.1", 0x0100007F}, DottedRow{"0177.0.0.1", 0x0100007F},
                    DottedRow{"4294967295", 0xFFFFFFFF}, DottedRow{"1.2.3.4 ", 0x04030201},
                    DottedRow{"1.2.3.4 and more", 0x04030201}, DottedRow{" ", 0},
                    DottedRow{"", 0xFFFFFFFF}, DottedRow{" 1.2.3.4", 0xFFFFFFFF},
                    DottedRow{"1.2.3.", 0xFFFFFFFF}, DottedRow{"1.2.3.4.5", 0xFFFFFFFF},
                    DottedRow{"256.0.0.1", 0xFFFFFFFF}, DottedRow{"1.2.3.256", 0xFFFFFFFF},
                    DottedRow{"08.0.0.1", 0xFFFFFFFF}, DottedRow{"name", 0xFFFFFFFF},
                    DottedRow{"1.2.3.4x", 0xFFFFFFFF}, DottedRow{"::1", 0xFFFFFFFF}));

TEST(DottedTexts, LeaveTheLastErrorAloneExceptNull) {
    EXPECT_EQ(Winsock::inet_addr(nullptr), 0xFFFFFFFF);
    EXPECT_EQ(Winsock::WSAGetLastError(), 10014);
    EXPECT_EQ(Winsock::inet_addr("no address"), 0xFFFFFFFF);
    EXPECT_EQ(Winsock::inet_addr("1.2.3.4"), 0x04030201U);
    EXPECT_EQ(Winsock::WSAGetLastError(), 10014);
}

using OwnName = Started;

TEST_F(OwnName, IsTerminatedAndFitsExactly) {
    char name[300];
    std::memset(name, '#', sizeof name);
    ASSERT_TRUE(Succeeds(Winsock::gethostname(name, sizeof name)));
    const int length = static_cast<int>(std::strlen(name));
    EXPECT_GT(length, 0);
    std::memset(name, '#', sizeof name);
    EXPECT_TRUE(Succeeds(Winsock::gethostname(name, length + 1)));
    EXPECT_EQ(name[length], '\0');
    EXPECT_EQ(name[length + 1], '#');
}

TEST_F(OwnName, WithoutRoomIsNotWrittenAtAll) {
    char name[300] = {};
    ASSERT_TRUE(Succeeds(Winsock::gethostname(name, sizeof name)));
    const int length = static_cast<int>(std::strlen(name));
    for (const int room : {length, 1, 0, -1}) {
        std::memset(name, '#', sizeof name);
        EXPECT_TRUE(FailsWith(10014, Winsock::gethostname(name, room))) << room;
        EXPECT_EQ(std::string(name, sizeof name), std::string(sizeof name, '#'));
    }
    EXPECT_TRUE(FailsWith(10014, Winsock::gethostname(nullptr, 100)));
}

const char* const Hosts =
    "127.0.0.1 localhost\n"
    "10.1.2.3 alpha.example alpha first\n"
    "10.9.8.7 beta.example\n"
    "fd00::7 six.example\n";

// Names that the system looks up in this file alone.
void WithNames(const std::string& hosts, const std::function<void()>& scene,
               const std::string& hostName = "here", const std::string& sources = "files") {
    const SceneResult result = RunWithNames(
        hosts, hostName,
        [&] {
            Winsock::StartupData data;
            EXPECT_EQ(Winsock::WSAStartup(0x202, &data), 0);
            scene();
            return !testing::Test::HasFailure();
        },
        sources);
    if (result == SceneResult::Impossible) GTEST_SKIP() << "not allowed to change name files";
    EXPECT_EQ(result, SceneResult::Passed);
}

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

TEST(HostByName, AnswersNameAliasesAndAddress) {
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

TEST(HostByName, KnowsLocalhost) {
    WithNames(Hosts, [] {
        const Winsock::HostEntry* entry = Winsock::gethostbyname("localhost");
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(AddressesOf(entry), Texts{"127.0.0.1"});
    });
}

TEST(HostByName, TakesADottedTextForTheAddressThatItIs) {
    WithNames(Hosts, [] {
        const Winsock::HostEntry* entry = Winsock::gethostbyname("192.0.2.77");
        ASSERT_NE(entry, nullptr);
        EXPECT_STREQ(entry->name, "192.0.2.77");
        EXPECT_EQ(AddressesOf(entry), Texts{"192.0.2.77"});
    });
}

TEST(HostByName, DoesNotFindWhatIsNoName) {
    WithNames(Hosts, [] {
        for (const std::string name :
             {"unknown.example", "::1", "with blank", "\xFF\xFE\x80", "\xC3\xA4rger"}) {
            EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname(name.c_str()))) << name;
        }
    });
}

TEST(HostByName, DoesNotFindNamesThatAreTooLong) {
    WithNames(Hosts, [] {
        EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname(std::string(64, 'a').c_str())));
        EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname(std::string(256, 'a').c_str())));
        EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname(std::string(5000, 'a').c_str())));
        EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname(std::string(5000, '.').c_str())));
    });
}

TEST(HostByName, TellsAnUnreachableNameServerFromAnUnknownName) {
    WithNames(
        Hosts, [] { EXPECT_TRUE(FailsWith(11002, Winsock::gethostbyname("unknown.example"))); },
        "here", "files dns");
}

TEST(HostByName, DoesNotAskAServerForANameThatIsTooLong) {
    WithNames(
        Hosts,
        [] {
            EXPECT_TRUE(FailsWith(11001, Winsock::gethostbyname(std::string(5000, 'a').c_str())));
        },
        "here", "files dns");
}

TEST(HostByName, WithoutANameIsThisComputer) {
    WithNames("10.4.4.4 here.example here\n", [] {
        for (const char* name : {static_cast<const char*>(nullptr), ""}) {
            const Winsock::HostEntry* entry = Winsock::gethostbyname(name);
            ASSERT_NE(entry, nullptr);
            EXPECT_STREQ(entry->name, "here.example");
            EXPECT_EQ(AddressesOf(entry), Texts{"10.4.4.4"});
        }
    });
}

TEST(HostByName, AComputerThatNobodyKnowsKnowsItself) {
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

TEST(HostByName, AnswersAnyNumberOfAddressesAndAliases) {
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

TEST(HostByName, EntriesAreEachThreadsOwn) {
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

TEST(HostByAddress, AnswersTheName) {
    WithNames(Hosts, [] {
        const char address[4] = {10, 9, 8, 7};
        const Winsock::HostEntry* entry = Winsock::gethostbyaddr(address, 4, 2);
        ASSERT_NE(entry, nullptr);
        EXPECT_TRUE(Succeeds(0));
        EXPECT_STREQ(entry->name, "beta.example");
        EXPECT_EQ(AddressesOf(entry), Texts{"10.9.8.7"});
    });
}

TEST(HostByAddress, AnswersTheNameOfAnIpv6AddressInWinsocksFamily) {
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

TEST(HostByAddress, AnAddressWithoutANameHasNoData) {
    WithNames(Hosts, [] {
        const char address[4] = {10, 77, 77, 77};
        EXPECT_TRUE(FailsWith(11004, Winsock::gethostbyaddr(address, 4, 2)));
    });
}

using AddressQuery = Started;

TEST_F(AddressQuery, RefusesWrongArguments) {
    const char address[16] = {127, 0, 0, 1};
    EXPECT_TRUE(FailsWith(10047, Winsock::gethostbyaddr(address, 4, 10)));
    EXPECT_TRUE(FailsWith(10047, Winsock::gethostbyaddr(address, 4, 0)));
    EXPECT_TRUE(FailsWith(10014, Winsock::gethostbyaddr(address, 3, 2)));
    EXPECT_TRUE(FailsWith(10014, Winsock::gethostbyaddr(address, -1, 2)));
    EXPECT_TRUE(FailsWith(10014, Winsock::gethostbyaddr(address, 15, 23)));
    EXPECT_TRUE(FailsWith(10014, Winsock::gethostbyaddr(nullptr, 4, 2)));
}

}  // namespace
}  // namespace Conformance

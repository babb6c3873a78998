// What an error of the resolver becomes in each of Winsock's name calls.
#include <netdb.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "conformance/NameScene.h"
#include "conformance/Scene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

struct Row {
    int system;
    int winsock;
};

// Numbers of getaddrinfo and getnameinfo; errors of the system after EAI_SYSTEM.
constexpr Row AddressInfoRows[] = {
    {EAI_AGAIN, 11002},  {EAI_BADFLAGS, 10022}, {EAI_FAIL, 11003},    {EAI_FAMILY, 10047},
    {EAI_MEMORY, 8},     {EAI_NODATA, 11004},   {EAI_SERVICE, 10109}, {EAI_SOCKTYPE, 10044},
    {EAI_OVERFLOW, 122}, {EAI_CANCELED, 11003}, {EMFILE, 10024},      {ENFILE, 10024},
    {EACCES, 10013},     {EPERM, 10013},        {ENOMEM, 10055},      {ENOBUFS, 10055},
    {ETIMEDOUT, 10060},  {ECONNREFUSED, 10061}, {ENETUNREACH, 10051}, {EIO, 11003},
    {ENOENT, 11003},     {EINVAL, 11003},
};

// Numbers of the resolver; errors of the system after NETDB_INTERNAL.
constexpr Row HostRows[] = {
    {TRY_AGAIN, 11002}, {NO_RECOVERY, 11003}, {NO_DATA, 11004},
    {ENOMEM, 11003},    {EMFILE, 11003},      {EIO, 11003},
};

using ResolverError = Started;

TEST_F(ResolverError, OfAListIsItsNumberAndNoList) {
    const auto expect = [](const Row& row) {
        const FailingCall fails(SystemCall::Getaddrinfo, row.system);
        List list = Resolved("10.1.2.3", "80");
        EXPECT_TRUE(Returns(row.winsock, Resolve("some.example", "80", list))) << row.system;
        EXPECT_EQ(list, nullptr);
        EXPECT_EQ(fails.Seen(), 1U);
    };
    for (const Row& row : AddressInfoRows)
        expect(row);
    expect({EAI_NONAME, 11001});
    expect({EAI_ADDRFAMILY, 11001});
}

TEST_F(ResolverError, OfAServiceIsItsNumber) {
    const FailingCall fails(SystemCall::Getaddrinfo, EAI_AGAIN);
    List list;
    EXPECT_TRUE(Returns(11002, Resolve(nullptr, "some-service", list)));
    EXPECT_TRUE(Returns(11002, Resolve("10.1.2.3", "some-service", list)));
}

TEST_F(ResolverError, OfASignalIsNone) {
    const FailingCall lists(SystemCall::Getaddrinfo, EINTR, {.count = 3});
    EXPECT_NE(Resolved("localhost", "80"), nullptr);
    EXPECT_EQ(lists.Seen(), 4U);
    const FailingCall texts(SystemCall::Getnameinfo, EINTR, {.count = 3});
    const Winsock::AddressIpv4 address = Loopback(80);
    char service[100];
    EXPECT_TRUE(Returns(
        0, Winsock::getnameinfo(&address, sizeof address, nullptr, 0, service, sizeof service, 0)));
    EXPECT_EQ(texts.Seen(), 4U);
}

int TextsOf(char (&host)[100], char (&service)[100], int flags) {
    const Winsock::AddressIpv4 address = Loopback(80);
    return Winsock::getnameinfo(&address, sizeof address, host, sizeof host, service,
                                sizeof service, flags);
}

TEST_F(ResolverError, OfAnAddresssTextsIsItsNumber) {
    char host[100];
    char service[100];
    for (const Row& row : AddressInfoRows) {
        const FailingCall fails(SystemCall::Getnameinfo, row.system);
        EXPECT_TRUE(Returns(row.winsock, TextsOf(host, service, 0))) << row.system;
        EXPECT_TRUE(Returns(row.winsock, TextsOf(host, service, Winsock::NumericHost)));
        EXPECT_TRUE(Returns(row.winsock, TextsOf(host, service, Winsock::NumericService)));
    }
}

TEST_F(ResolverError, OfHintsIsToldWithoutAskingTheResolver) {
    const CountedCall asked(SystemCall::Getaddrinfo);
    List list;
    for (const int flags : {1, 2, 4, 0x400}) {
        Winsock::AddressInfo hints = Hints(0);
        hints.flags = flags;
        EXPECT_TRUE(Returns(10022, Resolve("some.example", "80", list, &hints))) << flags;
    }
    EXPECT_EQ(asked.Seen(), 0U);
}

TEST_F(ResolverError, OfNumbersIsNone) {
    const FailingCall texts(SystemCall::Getnameinfo, EAI_FAIL);
    const FailingCall lists(SystemCall::Getaddrinfo, EAI_FAIL);
    char host[100];
    char service[100];
    EXPECT_TRUE(Returns(0, TextsOf(host, service, Winsock::NumericHost | Winsock::NumericService)));
    EXPECT_STREQ(host, "127.0.0.1");
    for (const char* const number : {"0.0.0.0", "9.9.9.9", "1.10.100.199", "90.249.254.255"})
        EXPECT_EQ(AddressesOf(Resolved(number, "80")), Texts{std::string(number) + " 80"});
    const Winsock::AddressInfo ipv4 = Hints(2);
    EXPECT_EQ(AddressesOf(Resolved("9.9.9.9", "80", &ipv4)), Texts{"9.9.9.9 80"});
    const Winsock::AddressInfo ipv6 = Hints(23);
    EXPECT_EQ(AddressesOf(Resolved("::9", "80", &ipv6)), Texts{"0:0:0:0:0:0:0:9%0 80"});
    EXPECT_EQ(AddressesOf(Resolved("::ffff:9.9.9.9", "80")), Texts{"0:0:0:0:0:ffff:909:909%0 80"});
    for (const char* const port : {"9", "09", "90", "65535", "00000"})
        EXPECT_EQ(AddressesOf(Resolved("10.1.2.3", port)),
                  Texts{"10.1.2.3 " + std::to_string(std::stoi(port))});
    EXPECT_EQ(AddressesOf(Resolved("10.1.2.3", "")), Texts{"10.1.2.3 0"});
}

// Every other text is the resolver's to read, whatever it makes of it.
TEST_F(ResolverError, OfWhatIsNoNumberIsTold) {
    const FailingCall lists(SystemCall::Getaddrinfo, EAI_FAIL);
    for (const char* const host :
         {"1", "1.2.3", "1.2.3.4.5", "01.2.3.4", "1.2.3.04", "00.0.0.0", "256.1.1.1", "1.2.3.256",
          "1.2.3.0255", "4294967297.0.0.1", "1..2.3", ".1.2.3", "1.2.3.", "1.2.3.4 ",
          "1.2.3.4\xC3\xA9", "1.2.3.a", "::g", "::1%0"}) {
        List list;
        EXPECT_TRUE(Returns(11003, Resolve(host, "80", list))) << host;
    }
    for (const char* const port : {"000080", "80 ", "+80", "8x", "80\xC3", "\xC3\xA9"}) {
        List list;
        EXPECT_TRUE(Returns(11003, Resolve("10.1.2.3", port, list))) << port;
    }
}

// A resolver that answers this, and leaves that number of an error behind.
Hook Answering(int result, int error) {
    return [=](const Call&) {
        errno = error;
        return Word{result};
    };
}

// Without a limit a wrong look at the number would ask for ever.
constexpr Occasion NotForEver = {.count = 100};

TEST_F(ResolverError, IsNotWhatAnErrorNumberSaysThatMeansNothing) {
    for (const Row& row : {Row{EAI_AGAIN, 11002}, Row{EAI_OVERFLOW, 122}, Row{EAI_FAIL, 11003}}) {
        const HookedCall answers(SystemCall::Getaddrinfo, Answering(row.system, EINTR), NotForEver);
        List list;
        EXPECT_TRUE(Returns(row.winsock, Resolve("some.example", "80", list))) << row.system;
        EXPECT_EQ(answers.Seen(), 1U);
    }
}

// What was there before the resolver was asked says nothing, of a failure or of an unknown name.
TEST_F(ResolverError, IsNotTheErrorNumberFromBefore) {
    for (const Row& row : {Row{EAI_SYSTEM, 11003}, Row{EAI_NONAME, 11001}}) {
        const HookedCall answers(
            SystemCall::Getaddrinfo, [&row](const Call&) { return Word{row.system}; }, NotForEver);
        for (const int earlier : {EINTR, EMFILE, EPERM}) {
            List list;
            errno = earlier;
            EXPECT_TRUE(Returns(row.winsock, Resolve("some.example", "80", list))) << earlier;
        }
        EXPECT_EQ(answers.Seen(), 3U);
    }
}

// An answer without an error and without a host: the error number tells why.
TEST_F(ResolverError, OfAHostWithoutANumberIsTheSystems) {
    for (const Row& row :
         {Row{EMFILE, 11003}, Row{EIO, 11003}, Row{ENOENT, 11001}, Row{0, 11001}}) {
        const HookedCall answers(SystemCall::Gethostbyname, [&row](const Call& call) {
            *call.Pointer<hostent*>(5) = nullptr;
            *call.Pointer<int>(6) = NETDB_SUCCESS;
            return Word{row.system};
        });
        EXPECT_TRUE(FailsWith(row.winsock, Winsock::gethostbyname("some.example"))) << row.system;
    }
}

TEST_F(ResolverError, ThatKnowsNoNameLeavesTheHostANumber) {
    const FailingCall fails(SystemCall::Getnameinfo, EAI_NONAME);
    char host[100];
    char service[100];
    EXPECT_TRUE(Returns(0, TextsOf(host, service, Winsock::NumericService)));
    EXPECT_STREQ(host, "127.0.0.1");
}

TEST_F(ResolverError, OfAHostIsItsNumber) {
    const auto expect = [](const Row& row) {
        const FailingCall fails(SystemCall::Gethostbyname, row.system);
        EXPECT_TRUE(FailsWith(row.winsock, Winsock::gethostbyname("some.example"))) << row.system;
        EXPECT_EQ(fails.Seen(), 1U);
    };
    for (const Row& row : HostRows)
        expect(row);
    expect({HOST_NOT_FOUND, 11001});
}

// An address without a name is a host without data.
TEST_F(ResolverError, OfAnAddressIsItsNumber) {
    constexpr char address[] = {10, 1, 2, 3};
    const auto expect = [&address](const Row& row) {
        const FailingCall fails(SystemCall::Gethostbyaddr, row.system);
        EXPECT_TRUE(FailsWith(row.winsock, Winsock::gethostbyaddr(address, 4, 2))) << row.system;
        EXPECT_EQ(fails.Seen(), 1U);
    };
    for (const Row& row : HostRows)
        expect(row);
    expect({HOST_NOT_FOUND, 11004});
}

TEST_F(ResolverError, ThatWantsMoreRoomGetsIt) {
    std::vector<Word> rooms;
    const HookedCall wants(SystemCall::Gethostbyname, [&rooms](const Call& call) {
        rooms.push_back(call.Argument(4));
        return rooms.size() < 4 ? call.Fail(ERANGE) : call.Make();
    });
    const Winsock::HostEntry* const entry = Winsock::gethostbyname("10.1.2.3");
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(std::string(entry->addresses[0], 4), (std::string{10, 1, 2, 3}));
    ASSERT_EQ(rooms.size(), 4U);
    for (std::size_t index = 1; index < rooms.size(); ++index)
        EXPECT_GT(rooms[index], rooms[index - 1]);
}

TEST_F(ResolverError, ThatNeverHasRoomEnoughIsOneAtLast) {
    const FailingCall names(SystemCall::Gethostbyname, ERANGE, {.count = 1000});
    EXPECT_TRUE(FailsWith(11003, Winsock::gethostbyname("some.example")));
    EXPECT_LT(names.Seen(), 1000U);
    const FailingCall addresses(SystemCall::Gethostbyaddr, ERANGE, {.count = 1000});
    EXPECT_TRUE(FailsWith(11003, Winsock::gethostbyaddr("\x0A\1\2\3", 4, 2)));
    EXPECT_LT(addresses.Seen(), 1000U);
}

}  // namespace
}  // namespace Conformance

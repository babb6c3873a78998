// SocketAddressCache as its users see it: what is asked of the system, and what is remembered.
#include <VelNet/SocketAddressCache.h>
#include <VelSynch/ReferenceCountedImpl.h>

#include <stdexcept>

#include "SocketTrials.h"

namespace SocketTests {
namespace {

using Cache = VelBase::ReturnPtrI<SocketAddressCache>;

constexpr char NotResolvable[] =
    "VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied is not "
    "resolvable on this machine. Connection = {";
constexpr char Nameless[] =
    "VelNet::SocketAddress::GetMachineNameFromOctets() - FAIL The address supplied is not "
    "resolvable on this machine. Connection = {";

class AddressCacheLookUps : public SocketTest {
protected:
    static Cache NewCache() { return CreateSocketAddressCache(); }

    static std::string AddressOf(SocketAddressCache& cache, const char* name) {
        return cache.GetOctetsFromMachineName(name).GetAddressString().c_str();
    }
    static std::string NameOf(SocketAddressCache& cache, const Octets& address) {
        return cache.GetMachineNameFromOctets(address).c_str();
    }
    static std::string NameOf(SocketAddressCache& cache, const std::string& dotted) {
        return NameOf(cache, OctetsOf(dotted));
    }

    static std::string Numbered(int number) {
        return "10.0." + std::to_string(number / 256) + '.' + std::to_string(number % 256);
    }
};

TEST_F(AddressCacheLookUps, NewCacheHasTheCountZero) {
    SocketAddressCache* const made = CreateSocketAddressCache();
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(dynamic_cast<const VelSynch::ReferenceCountedImpl<int>&>(*made).GetReferenceCount(),
              0);
    const Cache owner = made;
    EXPECT_EQ(dynamic_cast<const VelSynch::ReferenceCountedImpl<int>&>(*made).GetReferenceCount(),
              1);
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(AddressCacheLookUps, LastReleaseEndsTheCacheAndAllThatItRemembers) {
    const Allocations::Mark mark;
    SocketAddressCache* const cache = NewCache().Take();
    AddressOf(*cache, "server");
    NameOf(*cache, "10.1.2.3");
    cache->AddRef();
    cache->Release();
    EXPECT_EQ(AddressOf(*cache, "server"), "10.0.0.1");
    cache->Release();
    EXPECT_EQ(mark.LiveBlocks(), 0);
}

TEST_F(AddressCacheLookUps, WithoutMemoryThereIsNoCacheAndNoException) {
    const Allocations::Mark mark;
    std::size_t n = 1;
    for (bool exhausted = true; exhausted; ++n) {
        const Allocations::FailNth failing(n);
        SocketAddressCache* cache = nullptr;
        EXPECT_NO_THROW(cache = CreateSocketAddressCache()) << n;
        exhausted = failing.Happened();
        EXPECT_EQ(cache == nullptr, exhausted) << n;
        if (exhausted) {
            EXPECT_EQ(mark.LiveBlocks(), 0) << n;
        }
        const Cache owner = cache;
    }
    EXPECT_GT(n, 2U);
}

TEST_F(AddressCacheLookUps, NameIsResolvedOnceAndThenRemembered) {
    const Cache cache = NewCache();
    On::Gethostbyname().Returns({"10.1.2.3"});
    EXPECT_EQ(AddressOf(*cache, "server.example"), "10.1.2.3");
    EXPECT_EQ(Transcript(), Lines{"gethostbyname(\"server.example\")"});
    for (int time = 0; time < 3; ++time)
        EXPECT_EQ(AddressOf(*cache, "server.example"), "10.1.2.3");
    EXPECT_EQ(CountOf("gethostbyname"), 1);
    EXPECT_EQ(Transcript().size(), 1U);
}

// A host that moves keeps the address that was seen first.
TEST_F(AddressCacheLookUps, RememberedAddressOutlivesTheHostsChanges) {
    const Cache cache = NewCache();
    On::Gethostbyname().Returns({"10.1.2.3"}).Returns({"10.1.2.4"});
    EXPECT_EQ(AddressOf(*cache, "server"), "10.1.2.3");
    Winsock::gethostbyname("server");
    EXPECT_EQ(AddressOf(*cache, "server"), "10.1.2.3");
}

TEST_F(AddressCacheLookUps, OnlyTheFirstAddressIsKeptAndReturnedEachTime) {
    const Cache cache = NewCache();
    On::Gethostbyname().Returns({"10.1.2.5", "10.1.2.3", "10.1.2.4"});
    for (int time = 0; time < 4; ++time)
        EXPECT_EQ(AddressOf(*cache, "server"), "10.1.2.5");
    EXPECT_EQ(CountOf("gethostbyname"), 1);
}

TEST_F(AddressCacheLookUps, NamesAreToldApartByteByByte) {
    const Cache cache = NewCache();
    const Lines names = {"host",  "Host",  "HOST",   "host.", "host.example", "hos",  "",
                         " host", "host ", "host\t", "h",     "h\xC3\xB6st",  "host2"};
    int number = 0;
    for (const std::string& name : names) {
        On::Gethostbyname().Returns({Numbered(++number)});
        EXPECT_EQ(AddressOf(*cache, name.c_str()), Numbered(number)) << name;
    }
    EXPECT_EQ(CountOf("gethostbyname"), number);
    number = 0;
    for (const std::string& name : names)
        EXPECT_EQ(AddressOf(*cache, name.c_str()), Numbered(++number)) << name;
    EXPECT_EQ(CountOf("gethostbyname"), number);
}

TEST_F(AddressCacheLookUps, NameIsRememberedByItsTextAndNotByItsPlace) {
    const Cache cache = NewCache();
    char name[] = "server-1";
    On::Gethostbyname().Returns({"10.1.2.3"}).Returns({"10.1.2.4"});
    EXPECT_EQ(AddressOf(*cache, name), "10.1.2.3");
    name[sizeof name - 2] = '2';
    EXPECT_EQ(AddressOf(*cache, name), "10.1.2.4");
    EXPECT_EQ(AddressOf(*cache, "server-1"), "10.1.2.3");
}

// The resolver looks all of them up as "localhost"; the cache knows them as they were given.
TEST_F(AddressCacheLookUps, NamesThatBeginWithLocalhostAreRememberedApart) {
    const Cache cache = NewCache();
    const Lines names = {"localhost.localdomain", "localhosting", "localhost"};
    for (const std::string& name : names)
        AddressOf(*cache, name.c_str());
    EXPECT_EQ(Transcript(), Lines(3, "gethostbyname(\"localhost\")"));
    for (const std::string& name : names)
        AddressOf(*cache, name.c_str());
    EXPECT_EQ(CountOf("gethostbyname"), 3);
}

TEST_F(AddressCacheLookUps, EachFailureToResolvePassesEachTimeItIsAskedFor) {
    const Cache cache = NewCache();
    ExpectEachFailure({
        .failWith = [](int number) { On::Gethostbyname().Fails(number); },
        .operation = [&] { AddressOf(*cache, "server.example"); },
        .text = std::string(NotResolvable) + "server.example}",
        .calls = {"gethostbyname(\"server.example\")", "WSAGetLastError()"},
    });
}

TEST_F(AddressCacheLookUps, FailureIsNotRememberedAndLogsEachTime) {
    const Cache cache = NewCache();
    On::Gethostbyname().Fails(11001).Fails(11002).Returns({"10.1.2.3"});
    const std::string text = std::string(NotResolvable) + "server}";
    EXPECT_EQ(Catch([&] { AddressOf(*cache, "server"); }), FailureOf(text, 11001));
    EXPECT_EQ(Catch([&] { AddressOf(*cache, "server"); }), FailureOf(text, 11002));
    EXPECT_EQ(AddressOf(*cache, "server"), "10.1.2.3");
    EXPECT_EQ(AddressOf(*cache, "server"), "10.1.2.3");
    EXPECT_EQ(CountOf("gethostbyname"), 3);
    ExpectRecords(
        {FailureRecord(FailureText(text, 11001)), FailureRecord(FailureText(text, 11002))});
}

TEST_F(AddressCacheLookUps, HostWithoutAddressIsNotRemembered) {
    const Cache cache = NewCache();
    On::Gethostbyname().Returns({}).Returns({"10.1.2.3"});
    EXPECT_EQ(Catch([&] { AddressOf(*cache, "server"); }),
              (Caught{true,
                      u"VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL The host name "
                      u"supplied does not have an ip address. Connection = {server}",
                      -1}));
    EXPECT_EQ(AddressOf(*cache, "server"), "10.1.2.3");
    EXPECT_EQ(CountOf("gethostbyname"), 2);
}

TEST_F(AddressCacheLookUps, FailureKeepsNothingAndLosesNothing) {
    const Cache cache = NewCache();
    On::Gethostbyname().Returns({"10.1.2.3"}).Fails(11001).Fails(11001);
    On::Gethostbyaddr().Returns({}, "server").Fails(11004);
    AddressOf(*cache, "server");
    NameOf(*cache, "10.1.2.3");
    const auto fail = [&] {
        Catch([&] { AddressOf(*cache, "a name that needs memory of its own"); });
    };
    fail();  // what the record keeps is kept now
    const std::size_t records = LoggedMessages().size();
    SetRouterFlag(ErrorCategory, 0);
    const Allocations::Mark mark;
    fail();
    Catch([&] { NameOf(*cache, "10.9.9.9"); });
    EXPECT_EQ(mark.LiveBlocks(), 0);
    EXPECT_EQ(LoggedMessages().size(), records);
    ClearTranscript();
    EXPECT_EQ(AddressOf(*cache, "server"), "10.1.2.3");
    EXPECT_EQ(NameOf(*cache, "10.1.2.3"), "server");
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(AddressCacheLookUps, WhatElseTheResolverThrowsPassesAndIsNotRemembered) {
    const Cache cache = NewCache();
    On::Gethostbyname().Throws(std::runtime_error("gone")).Returns({"10.1.2.3"});
    On::Gethostbyaddr().Throws(42).Returns({}, "server");
    EXPECT_THROW(AddressOf(*cache, "server"), std::runtime_error);
    EXPECT_THROW(NameOf(*cache, "10.1.2.3"), int);
    EXPECT_EQ(AddressOf(*cache, "server"), "10.1.2.3");
    EXPECT_EQ(NameOf(*cache, "10.1.2.3"), "server");
}

TEST_F(AddressCacheLookUps, AddressIsResolvedOnceAndThenRemembered) {
    const Cache cache = NewCache();
    On::Gethostbyaddr().Returns({"10.9.9.9"}, "server.example");
    EXPECT_EQ(NameOf(*cache, Octets(254, 128, 1, 127)), "server.example");
    EXPECT_EQ(Transcript(), Lines{"gethostbyaddr(254.128.1.127, 4, 2)"});
    for (int time = 0; time < 3; ++time)
        EXPECT_EQ(NameOf(*cache, Octets(254, 128, 1, 127)), "server.example");
    EXPECT_EQ(Transcript().size(), 1U);
}

TEST_F(AddressCacheLookUps, AddressesAreToldApartByEachOctet) {
    const Cache cache = NewCache();
    const Lines addresses = {"10.1.2.3", "11.1.2.3", "10.2.2.3", "10.1.3.3",
                             "10.1.2.4", "3.2.1.10", "0.0.0.0",  "255.255.255.255"};
    for (const std::string& address : addresses) {
        On::Gethostbyaddr().Returns({}, "name of " + address);
        EXPECT_EQ(NameOf(*cache, address), "name of " + address);
    }
    const int asked = CountOf("gethostbyaddr");
    EXPECT_EQ(asked, static_cast<int>(addresses.size()));
    for (const std::string& address : addresses)
        EXPECT_EQ(NameOf(*cache, address), "name of " + address);
    EXPECT_EQ(CountOf("gethostbyaddr"), asked);
}

TEST_F(AddressCacheLookUps, EmptyNameOfAnAddressIsRememberedToo) {
    const Cache cache = NewCache();
    On::Gethostbyaddr().Returns({}, "");
    EXPECT_EQ(NameOf(*cache, "10.1.2.3"), "");
    EXPECT_EQ(NameOf(*cache, "10.1.2.3"), "");
    EXPECT_EQ(CountOf("gethostbyaddr"), 1);
}

TEST_F(AddressCacheLookUps, EachFailureToFindANamePassesWithoutALog) {
    const Cache cache = NewCache();
    ExpectEachFailure({
        .failWith = [](int number) { On::Gethostbyaddr().Fails(number); },
        .operation = [&] { NameOf(*cache, "10.1.2.3"); },
        .text = std::string(Nameless) + "10.1.2.3}",
        .calls = {"gethostbyaddr(10.1.2.3, 4, 2)", "WSAGetLastError()"},
        .isLogged = false,
    });
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(AddressCacheLookUps, FailureToFindANameIsNotRemembered) {
    const Cache cache = NewCache();
    On::Gethostbyaddr().Fails(11004).Fails(11002).Returns({}, "server");
    const std::string text = std::string(Nameless) + "10.1.2.3}";
    EXPECT_EQ(Catch([&] { NameOf(*cache, "10.1.2.3"); }), FailureOf(text, 11004));
    EXPECT_EQ(Catch([&] { NameOf(*cache, "10.1.2.3"); }), FailureOf(text, 11002));
    EXPECT_EQ(NameOf(*cache, "10.1.2.3"), "server");
    EXPECT_EQ(NameOf(*cache, "10.1.2.3"), "server");
    EXPECT_EQ(CountOf("gethostbyaddr"), 3);
}

TEST_F(AddressCacheLookUps, WhatOneOperationLearntTheOtherDoesNotKnow) {
    const Cache cache = NewCache();
    On::Gethostbyname().Returns({"10.1.2.3"}, "server").Returns({"10.1.2.7"});
    On::Gethostbyaddr().Returns({"10.1.2.3"}, "server").Returns({"10.1.2.4"}, "peer");
    EXPECT_EQ(AddressOf(*cache, "server"), "10.1.2.3");
    EXPECT_EQ(NameOf(*cache, "10.1.2.3"), "server");
    EXPECT_EQ(NameOf(*cache, "10.1.2.4"), "peer");
    EXPECT_EQ(AddressOf(*cache, "peer"), "10.1.2.7");
    EXPECT_EQ(Transcript(), (Lines{"gethostbyname(\"server\")", "gethostbyaddr(10.1.2.3, 4, 2)",
                                   "gethostbyaddr(10.1.2.4, 4, 2)", "gethostbyname(\"peer\")"}));
}

TEST_F(AddressCacheLookUps, ThousandNamesAndAddressesStay) {
    constexpr int Count = 1000;
    const Cache cache = NewCache();
    const auto expectAll = [&] {
        for (int number = 0; number < Count; ++number) {
            const std::string name = "host-" + std::to_string(number);
            ASSERT_EQ(AddressOf(*cache, name.c_str()), Numbered(number));
            ASSERT_EQ(NameOf(*cache, Numbered(number)), name);
        }
    };
    for (int number = 0; number < Count; ++number) {
        On::Gethostbyname().Returns({Numbered(number)});
        On::Gethostbyaddr().Returns({}, "host-" + std::to_string(number));
    }
    expectAll();
    ClearTranscript();
    expectAll();
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(AddressCacheLookUps, EachCacheRemembersForItself) {
    const Cache one = NewCache();
    const Cache other = NewCache();
    EXPECT_NE(one.Get(), other.Get());
    On::Gethostbyname().Returns({"10.1.2.3"}).Returns({"10.1.2.4"});
    EXPECT_EQ(AddressOf(*one, "server"), "10.1.2.3");
    EXPECT_EQ(AddressOf(*other, "server"), "10.1.2.4");
}

TEST_F(AddressCacheLookUps, WhatIsReturnedIsTheCallers) {
    const Cache cache = NewCache();
    Octets address = cache->GetOctetsFromMachineName("server");
    const VelBase::ReturnString name = cache->GetMachineNameFromOctets(Octets(10, 1, 2, 3));
    const VelBase::ReturnString again = cache->GetMachineNameFromOctets(Octets(10, 1, 2, 3));
    address = Octets(9, 9, 9, 9);
    EXPECT_EQ(AddressOf(*cache, "server"), "10.0.0.1");
    EXPECT_NE(name.c_str(), again.c_str());
    EXPECT_STREQ(name.c_str(), again.c_str());
}

TEST_F(AddressCacheLookUps, LongNamesAreRememberedWhole) {
    const Cache cache = NewCache();
    const std::string one = std::string(5000, 'n') + "1";
    const std::string other = std::string(5000, 'n') + "2";
    On::Gethostbyname().Returns({"10.1.2.3"}).Returns({"10.1.2.4"});
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(AddressOf(*cache, one.c_str()), "10.1.2.3");
        EXPECT_EQ(AddressOf(*cache, other.c_str()), "10.1.2.4");
    }
}

TEST_F(AddressCacheLookUps, ExhaustedMemoryFailsTheLookUpOfWhatIsRemembered) {
    const Cache cache = NewCache();
    const Octets address(10, 1, 2, 3);
    AddressOf(*cache, "server");
    NameOf(*cache, address);
    const Allocations::Mark mark;
    std::size_t n = 1;
    for (; RunsOutOfMemory(n, [&] { cache->GetOctetsFromMachineName("server"); }); ++n) {
    }
    EXPECT_GT(n, 1U);
    for (n = 1; RunsOutOfMemory(n, [&] { cache->GetMachineNameFromOctets(address); }); ++n) {
    }
    EXPECT_GT(n, 2U);
    EXPECT_EQ(mark.LiveBlocks(), 0);
    EXPECT_EQ(AddressOf(*cache, "server"), "10.0.0.1");
}

// Each list grows in steps of its own.
TEST_F(AddressCacheLookUps, ExhaustedMemoryAtAnyLengthLosesNothing) {
    const Cache cache = NewCache();
    for (int number = 0; number < 20; ++number) {
        const std::string name = "host-" + std::to_string(number);
        const Octets address = OctetsOf(Numbered(number));
        const auto lookUp = [&] {
            cache->GetOctetsFromMachineName(name.c_str());
            cache->GetMachineNameFromOctets(address);
        };
        for (std::size_t n = 1; RunsOutOfMemory(n, lookUp); ++n) {
        }
        ClearTranscript();
        for (int earlier = 0; earlier <= number; ++earlier) {
            EXPECT_EQ(AddressOf(*cache, ("host-" + std::to_string(earlier)).c_str()), "10.0.0.1");
            EXPECT_EQ(NameOf(*cache, Numbered(earlier)), "host.example");
        }
        EXPECT_EQ(Transcript(), Lines());
    }
}

}  // namespace
}  // namespace SocketTests

// SocketAddressCacheImpl from within: its entries, who holds them, and copies of it.
#include <Socket/SocketAddressCacheImpl.h>

#include <type_traits>
#include <utility>

#include "SocketTrials.h"

namespace SocketTests {
namespace {

using Entry = VelBase::ReturnPtrI<CacheEntry>;
using FindByName = Entry (SocketAddressCacheImpl::*)(const char*) const;
using FindByAddress = Entry (SocketAddressCacheImpl::*)(Octets) const;

// Explicit instantiation may name private members.
template <class Member, auto Pointer>
struct Exposed {
    friend constexpr auto PointerTo(Member) { return Pointer; }
};

struct NameList {
    friend constexpr auto PointerTo(NameList);
};
struct AddressList {
    friend constexpr auto PointerTo(AddressList);
};
struct EntryByName {
    friend constexpr auto PointerTo(EntryByName);
};
struct EntryByAddress {
    friend constexpr auto PointerTo(EntryByAddress);
};

template struct Exposed<NameList, &SocketAddressCacheImpl::byName_>;
template struct Exposed<AddressList, &SocketAddressCacheImpl::byAddress_>;
template struct Exposed<EntryByName,
                        static_cast<FindByName>(&SocketAddressCacheImpl::GetCacheEntry)>;
template struct Exposed<EntryByAddress,
                        static_cast<FindByAddress>(&SocketAddressCacheImpl::GetCacheEntry)>;

static_assert(std::is_convertible_v<SocketAddressCacheImpl*, VelSynch::ReferenceCountedImpl<int>*>);
static_assert(std::is_convertible_v<SocketAddressCacheImpl*, SocketAddressCache*>);
// Ambiguous, were it not shared.
static_assert(std::is_convertible_v<SocketAddressCacheImpl*, VelBase::ReferenceCounted*>);
static_assert(std::is_base_of_v<VelSynch::ReferenceCountedImpl<int>, CacheEntry>);
static_assert(!std::is_base_of_v<SocketAddressCache, CacheEntry>);
static_assert(std::is_copy_constructible_v<SocketAddressCacheImpl>);
static_assert(std::is_copy_assignable_v<SocketAddressCacheImpl>);
static_assert(std::is_default_constructible_v<SocketAddressCacheImpl>);

// Writes down when it ends.
class MortalEntry : public CacheEntry {
public:
    MortalEntry(std::string name, Lines& ended) : name_(std::move(name)), ended_(ended) {
        hostName = name_;
    }
    ~MortalEntry() override {
        const Allocations::Uncounted uncounted;
        ended_.push_back(name_);
    }
    MortalEntry(const MortalEntry&) = delete;
    MortalEntry& operator=(const MortalEntry&) = delete;

private:
    std::string name_;
    Lines& ended_;
};

class AddressCacheEntryList : public SocketTest {
protected:
    using Cache = VelBase::ReturnPtrI<SocketAddressCacheImpl>;

    static Cache NewCache() { return {new SocketAddressCacheImpl}; }

    static auto& Names(SocketAddressCacheImpl& cache) { return cache.*PointerTo(NameList()); }
    static auto& Addresses(SocketAddressCacheImpl& cache) {
        return cache.*PointerTo(AddressList());
    }
    static Entry Find(const SocketAddressCacheImpl& cache, const char* name) {
        return (cache.*PointerTo(EntryByName()))(name);
    }
    static Entry Find(const SocketAddressCacheImpl& cache, const Octets& address) {
        return (cache.*PointerTo(EntryByAddress()))(address);
    }

    static std::string AddressOf(SocketAddressCache& cache, const char* name) {
        return cache.GetOctetsFromMachineName(name).GetAddressString().c_str();
    }
    static std::string NameOf(SocketAddressCache& cache, const Octets& address) {
        return cache.GetMachineNameFromOctets(address).c_str();
    }

    static Entry NewEntry(const char* name, const Octets& address) {
        const Entry entry(new CacheEntry);
        entry->hostName = name;
        entry->address = address;
        return {entry.Get()};
    }
};

TEST_F(AddressCacheEntryList, FactoryMakesTheImplementation) {
    const VelBase::ReturnPtrI<SocketAddressCache> cache = CreateSocketAddressCache();
    EXPECT_NE(dynamic_cast<SocketAddressCacheImpl*>(cache.Get()), nullptr);
}

TEST_F(AddressCacheEntryList, NewEntryIsEmpty) {
    const Entry entry(new CacheEntry);
    EXPECT_EQ(entry->hostName, "");
    EXPECT_TRUE(entry->address == Octets());
    EXPECT_EQ(entry->GetReferenceCount(), 1);
}

TEST_F(AddressCacheEntryList, AnswersAreRememberedWithNameAndAddressAndOneReference) {
    const Cache cache = NewCache();
    On::Gethostbyname().Returns({"10.1.2.3"}, "official.example");
    On::Gethostbyaddr().Returns({"10.9.9.9"}, "peer.example");
    AddressOf(*cache, "server");
    NameOf(*cache, Octets(10, 1, 2, 4));
    ASSERT_EQ(Names(*cache).size(), 1U);
    EXPECT_EQ(Names(*cache)[0]->hostName, "server");
    EXPECT_TRUE(Names(*cache)[0]->address == Octets(10, 1, 2, 3));
    EXPECT_EQ(Names(*cache)[0]->GetReferenceCount(), 1);
    ASSERT_EQ(Addresses(*cache).size(), 1U);
    EXPECT_EQ(Addresses(*cache)[0]->hostName, "peer.example");
    EXPECT_TRUE(Addresses(*cache)[0]->address == Octets(10, 1, 2, 4));
    EXPECT_EQ(Addresses(*cache)[0]->GetReferenceCount(), 1);
    AddressOf(*cache, "server");
    NameOf(*cache, Octets(10, 1, 2, 4));
    EXPECT_EQ(Names(*cache).size() + Addresses(*cache).size(), 2U);
    EXPECT_EQ(Names(*cache)[0]->GetReferenceCount(), 1);
    EXPECT_EQ(Addresses(*cache)[0]->GetReferenceCount(), 1);
}

TEST_F(AddressCacheEntryList, EntriesStandInTheOrderInWhichTheyWereLearnt) {
    const Cache cache = NewCache();
    for (const char* const name : {"c", "a", "b"})
        AddressOf(*cache, name);
    ASSERT_EQ(Names(*cache).size(), 3U);
    EXPECT_EQ(Names(*cache)[0]->hostName, "c");
    EXPECT_EQ(Names(*cache)[1]->hostName, "a");
    EXPECT_EQ(Names(*cache)[2]->hostName, "b");
    for (const unsigned int address : {3U, 1U, 2U})
        NameOf(*cache, Octets(address));
    ASSERT_EQ(Addresses(*cache).size(), 3U);
    EXPECT_TRUE(Addresses(*cache)[0]->address == Octets(3U));
    EXPECT_TRUE(Addresses(*cache)[1]->address == Octets(1U));
    EXPECT_TRUE(Addresses(*cache)[2]->address == Octets(2U));
}

TEST_F(AddressCacheEntryList, NothingIsAppendedUntilTheResolverHasAnswered) {
    const Cache cache = NewCache();
    const auto expectNothing = [&](const Event&) {
        EXPECT_TRUE(Names(*cache).empty());
        EXPECT_TRUE(Addresses(*cache).empty());
    };
    Observe("gethostbyname", expectNothing);
    Observe("gethostbyaddr", expectNothing);
    On::Gethostbyname().Fails(11001);
    On::Gethostbyaddr().Fails(11004);
    Catch([&] { AddressOf(*cache, "server"); });
    Catch([&] { NameOf(*cache, Octets(10, 1, 2, 3)); });
    EXPECT_TRUE(Names(*cache).empty());
    EXPECT_TRUE(Addresses(*cache).empty());
    AddressOf(*cache, "server");
    EXPECT_EQ(Names(*cache).size(), 1U);
    EXPECT_TRUE(Addresses(*cache).empty());
}

TEST_F(AddressCacheEntryList, FirstMatchWins) {
    const Cache cache = NewCache();
    for (const Octets& address : {Octets(10, 0, 0, 9), Octets(10, 0, 0, 1), Octets(10, 0, 0, 2)})
        Names(*cache).emplace_back(
            NewEntry(address.GetOctet4() == 9 ? "other" : "server", address).Get());
    for (const char* const name : {"first", "second"})
        Addresses(*cache).emplace_back(NewEntry(name, Octets(10, 0, 0, 1)).Get());
    EXPECT_EQ(AddressOf(*cache, "server"), "10.0.0.1");
    EXPECT_EQ(NameOf(*cache, Octets(10, 0, 0, 1)), "first");
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(AddressCacheEntryList, LookUpTakesAReferenceOrFindsNothing) {
    const Cache cache = NewCache();
    const Octets address(10, 1, 2, 3);
    EXPECT_FALSE(Find(*cache, "server"));
    EXPECT_FALSE(Find(*cache, address));
    AddressOf(*cache, "server");
    NameOf(*cache, address);
    {
        const Entry byName = Find(*cache, "server");
        const Entry byAddress = Find(*cache, address);
        EXPECT_EQ(byName.Get(), Names(*cache)[0].Get());
        EXPECT_EQ(byAddress.Get(), Addresses(*cache)[0].Get());
        EXPECT_EQ(byName->GetReferenceCount(), 2);
        EXPECT_EQ(byAddress->GetReferenceCount(), 2);
    }
    EXPECT_EQ(Names(*cache)[0]->GetReferenceCount(), 1);
    EXPECT_EQ(Addresses(*cache)[0]->GetReferenceCount(), 1);
    EXPECT_FALSE(Find(*cache, "serve"));
    EXPECT_FALSE(Find(*cache, "servers"));
    EXPECT_FALSE(Find(*cache, Octets(10, 1, 2, 4)));
    // Each list is searched for its own.
    EXPECT_FALSE(Find(*cache, Octets(10, 0, 0, 1)));
    EXPECT_FALSE(Find(*cache, "host.example"));
}

TEST_F(AddressCacheEntryList, NullIsTheEmptyName) {
    const Cache cache = NewCache();
    On::Gethostbyname().Returns({"10.1.2.3"});
    EXPECT_EQ(AddressOf(*cache, nullptr), "10.1.2.3");
    EXPECT_EQ(AddressOf(*cache, ""), "10.1.2.3");
    EXPECT_EQ(AddressOf(*cache, nullptr), "10.1.2.3");
    EXPECT_EQ(Transcript(), Lines{"gethostbyname(\"\")"});
}

TEST_F(AddressCacheEntryList, EndOfTheCacheReleasesWhatIsKnownByAddressBeforeWhatIsKnownByName) {
    Lines ended;
    Cache cache = NewCache();
    Names(*cache).emplace_back(new MortalEntry("by name", ended));
    Addresses(*cache).emplace_back(new MortalEntry("by address", ended));
    const Entry kept(new MortalEntry("kept", ended));
    Names(*cache).emplace_back(kept.Get());
    cache = {};
    EXPECT_EQ(ended, (Lines{"by address", "by name"}));
    EXPECT_EQ(kept->GetReferenceCount(), 1);
}

TEST_F(AddressCacheEntryList, CopyRefersToTheSameEntriesAndCountsForItself) {
    const Cache source = NewCache();
    AddressOf(*source, "server");
    AddressOf(*source, "other");
    NameOf(*source, Octets(10, 1, 2, 3));
    source->AddRef();
    auto* const made = new SocketAddressCacheImpl(*source);
    EXPECT_EQ(made->GetReferenceCount(), 0);
    EXPECT_EQ(source->GetReferenceCount(), 2);
    source->Release();
    {
        const Cache copy(made);
        ASSERT_EQ(Names(*copy).size(), 2U);
        ASSERT_EQ(Addresses(*copy).size(), 1U);
        for (std::size_t index = 0; index < 2; ++index) {
            EXPECT_EQ(Names(*copy)[index].Get(), Names(*source)[index].Get());
            EXPECT_EQ(Names(*copy)[index]->GetReferenceCount(), 2);
        }
        EXPECT_EQ(Addresses(*copy)[0].Get(), Addresses(*source)[0].Get());
        EXPECT_EQ(Addresses(*copy)[0]->GetReferenceCount(), 2);
    }
    EXPECT_EQ(Names(*source)[0]->GetReferenceCount(), 1);
    EXPECT_EQ(Addresses(*source)[0]->GetReferenceCount(), 1);
}

TEST_F(AddressCacheEntryList, CopyKnowsWhatItsSourceKnewAndLearnsForItself) {
    Cache source = NewCache();
    AddressOf(*source, "server");
    const Cache copy(new SocketAddressCacheImpl(*source));
    AddressOf(*source, "of the source");
    AddressOf(*copy, "of the copy");
    source = {};
    ClearTranscript();
    EXPECT_EQ(AddressOf(*copy, "server"), "10.0.0.1");
    EXPECT_EQ(AddressOf(*copy, "of the copy"), "10.0.0.1");
    EXPECT_EQ(Transcript(), Lines());
    AddressOf(*copy, "of the source");
    EXPECT_EQ(Transcript(), Lines{"gethostbyname(\"of the source\")"});
}

// Targets that know less, as much and more than the source.
TEST_F(AddressCacheEntryList, AssignmentTakesTheEntriesAndKeepsTheCount) {
    for (const int known : {0, 1, 2, 5}) {
        const Cache source = NewCache();
        AddressOf(*source, "server");
        AddressOf(*source, "other");
        NameOf(*source, Octets(10, 1, 2, 3));
        const Cache target = NewCache();
        for (int number = 0; number < known; ++number) {
            AddressOf(*target, ("known-" + std::to_string(number)).c_str());
            NameOf(*target, Octets(static_cast<unsigned int>(number)));
        }
        target->AddRef();
        EXPECT_EQ(&(*target = *source), target.Get());
        EXPECT_EQ(target->GetReferenceCount(), 2);
        target->Release();
        ASSERT_EQ(Names(*target).size(), 2U);
        ASSERT_EQ(Addresses(*target).size(), 1U);
        EXPECT_EQ(Names(*target)[1].Get(), Names(*source)[1].Get());
        EXPECT_EQ(Names(*target)[1]->GetReferenceCount(), 2);
        EXPECT_EQ(Addresses(*target)[0].Get(), Addresses(*source)[0].Get());
        EXPECT_EQ(Addresses(*target)[0]->GetReferenceCount(), 2);
    }
}

TEST_F(AddressCacheEntryList, SelfAssignmentChangesNothing) {
    const Cache cache = NewCache();
    AddressOf(*cache, "server");
    const SocketAddressCacheImpl& itself = *cache;
    *cache = itself;
    ASSERT_EQ(Names(*cache).size(), 1U);
    EXPECT_EQ(Names(*cache)[0]->GetReferenceCount(), 1);
    EXPECT_EQ(AddressOf(*cache, "server"), "10.0.0.1");
}

TEST_F(AddressCacheEntryList, ReplacedEntriesAreReleased) {
    const Cache source = NewCache();
    AddressOf(*source, "server");
    Lines ended;
    const Cache target = NewCache();
    Names(*target).emplace_back(new MortalEntry("replaced", ended));
    *target = *source;
    EXPECT_EQ(ended, Lines{"replaced"});
}

// Attempts the look-up on a new cache with each of its requests of memory failing. Whether the
// answer is remembered when nothing but its copy for the caller failed, is nobody's concern.
template <class LookUp>
std::size_t ExpectEachRequestToMatter(LookUp lookUp) {
    return FailEveryAllocation([&](std::size_t n) {
        const Allocations::Mark mark;
        VelBase::ReturnPtrI<SocketAddressCache> cache = CreateSocketAddressCache();
        const bool exhausted = RunsOutOfMemory(n, [&] { lookUp(*cache); });
        lookUp(*cache);
        cache = nullptr;
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
        return exhausted;
    });
}

TEST_F(AddressCacheEntryList, ExhaustedMemoryFailsLookUpsAndLeavesNothing) {
    const std::string name(100, 'n');
    const Octets address(10, 1, 2, 3);
    EXPECT_GT(ExpectEachRequestToMatter([&](SocketAddressCache& cache) {
                  const Octets found = cache.GetOctetsFromMachineName(name.c_str());
                  EXPECT_TRUE(found == Octets(10, 0, 0, 1));
              }),
              7U);
    EXPECT_GT(ExpectEachRequestToMatter([&](SocketAddressCache& cache) {
                  EXPECT_STREQ(cache.GetMachineNameFromOctets(address).c_str(), "host.example");
              }),
              5U);
}

TEST_F(AddressCacheEntryList, CopyingWithoutMemoryLeavesTheSourceAlone) {
    const Cache source = NewCache();
    AddressOf(*source, "server");
    NameOf(*source, Octets(10, 1, 2, 3));
    const Allocations::Mark mark;
    std::size_t n = 1;
    for (; RunsOutOfMemory(n, [&] { const Cache copy(new SocketAddressCacheImpl(*source)); });
         ++n) {
        EXPECT_EQ(Names(*source)[0]->GetReferenceCount(), 1) << n;
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
    }
    EXPECT_GT(n, 3U);
}

}  // namespace
}  // namespace SocketTests

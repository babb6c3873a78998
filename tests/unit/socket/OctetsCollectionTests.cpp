#include <Socket/OctetsCollectionImpl.h>
#include <VelBase/ReturnPtrI.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "scripted/ScriptedPlatform.h"

namespace FoundationTests {
namespace {

using Scripted::Lines;
using Scripted::Allocations::FailNth;
using Scripted::Allocations::Mark;
using VelBase::ReturnPtrI;
using VelNet::CreateOctetsCollection;
using VelNet::Octets;
using VelNet::OctetsCollection;
using VelNet::OctetsCollectionImpl;

class OctetsCollectionList : public Scripted::PlatformTest {};

using Owner = ReturnPtrI<OctetsCollection>;

Lines ElementsOf(const OctetsCollection& collection) {
    Lines elements;
    for (unsigned int index = 0; index < collection.GetCount(); ++index)
        elements.push_back(collection.GetOctets(index).GetAddressString().c_str());
    return elements;
}

Owner CollectionOf(unsigned int count) {
    Owner collection = CreateOctetsCollection();
    for (unsigned int number = 1; number <= count; ++number)
        collection->Add(Octets(10, 0, static_cast<unsigned char>(number / 256),
                               static_cast<unsigned char>(number % 256)));
    return collection;
}

int CountOf(const OctetsCollection& collection) {
    return dynamic_cast<const VelSynch::ReferenceCountedImpl<int>&>(collection).GetReferenceCount();
}

// A collection that writes down what it is asked, and answers as it is told.
class RecordingCollection : public OctetsCollection {
public:
    explicit RecordingCollection(std::function<unsigned int()> count) : count_(std::move(count)) {}

    void AddCollection(const OctetsCollection&) override { Note("AddCollection"); }
    void Add(Octets) override { Note("Add"); }
    unsigned int GetCount() const override {
        Note("GetCount");
        return count_();
    }
    Octets GetOctets(unsigned int index) const override {
        Note("GetOctets(" + std::to_string(index) + ")");
        return {192, 168, 0, static_cast<unsigned char>(index)};
    }
    void AddRef() const override { Note("AddRef"); }
    void Release() const override { Note("Release"); }

    const Lines& Calls() const { return calls_; }

private:
    void Note(const std::string& call) const {
        const Scripted::Allocations::Uncounted uncounted;
        calls_.push_back(call);
    }

    std::function<unsigned int()> count_;
    mutable Lines calls_;
};

TEST_F(OctetsCollectionList, NewOneIsEmptyAndHasTheCountZero) {
    OctetsCollection* const made = CreateOctetsCollection();
    EXPECT_EQ(CountOf(*made), 0);
    EXPECT_EQ(made->GetCount(), 0U);
    {
        const Owner owner = made;
        EXPECT_EQ(CountOf(*made), 1);
    }
    static_assert(std::is_same_v<decltype(CreateOctetsCollection()), OctetsCollection*>);
}

TEST_F(OctetsCollectionList, EachCallMakesAnother) {
    const Owner one = CreateOctetsCollection();
    const Owner other = CreateOctetsCollection();
    one->Add(Octets(1, 2, 3, 4));
    EXPECT_NE(one.Get(), other.Get());
    EXPECT_EQ(other->GetCount(), 0U);
}

TEST_F(OctetsCollectionList, IsTheImplementation) {
    const Owner owner = CreateOctetsCollection();
    EXPECT_NE(dynamic_cast<OctetsCollectionImpl*>(owner.Get()), nullptr);
    static_assert(std::is_base_of_v<VelSynch::ReferenceCountedImpl<int>, OctetsCollectionImpl>);
    static_assert(std::is_base_of_v<OctetsCollection, OctetsCollectionImpl>);
}

TEST_F(OctetsCollectionList, LastReleaseFreesEveryElement) {
    const Mark mark;
    OctetsCollection* const collection = CollectionOf(50).Take();
    collection->AddRef();
    collection->Release();
    EXPECT_EQ(collection->GetCount(), 50U);
    EXPECT_GE(mark.LiveBlocks(), 50);
    collection->Release();
    EXPECT_EQ(mark.LiveBlocks(), 0);
}

TEST_F(OctetsCollectionList, AddAppendsInOrder) {
    const Owner collection = CreateOctetsCollection();
    collection->Add(Octets(3, 0, 0, 3));
    collection->Add(Octets(1, 0, 0, 1));
    collection->Add(Octets(2, 0, 0, 2));
    EXPECT_EQ(ElementsOf(*collection), (Lines{"3.0.0.3", "1.0.0.1", "2.0.0.2"}));
}

TEST_F(OctetsCollectionList, DuplicatesCountSeparately) {
    const Owner collection = CreateOctetsCollection();
    for (int time = 0; time < 3; ++time)
        collection->Add(Octets(1, 2, 3, 4));
    EXPECT_EQ(collection->GetCount(), 3U);
    EXPECT_EQ(ElementsOf(*collection), (Lines{"1.2.3.4", "1.2.3.4", "1.2.3.4"}));
    static_assert(std::is_same_v<decltype(collection->GetCount()), unsigned int>);
}

TEST_F(OctetsCollectionList, AddedValueIsCopied) {
    const Owner collection = CreateOctetsCollection();
    Octets octets(1, 2, 3, 4);
    collection->Add(octets);
    octets = Octets(9, 9, 9, 9);
    EXPECT_EQ(ElementsOf(*collection), Lines{"1.2.3.4"});
}

TEST_F(OctetsCollectionList, ReturnedElementIsACopy) {
    const Owner collection = CreateOctetsCollection();
    collection->Add(Octets(1, 2, 3, 4));
    Octets octets = collection->GetOctets(0);
    octets = Octets(9, 9, 9, 9);
    EXPECT_EQ(ElementsOf(*collection), Lines{"1.2.3.4"});
}

TEST_F(OctetsCollectionList, ThousandsOfElementsKeepTheirPlaces) {
    const Owner collection = CollectionOf(5000);
    ASSERT_EQ(collection->GetCount(), 5000U);
    for (unsigned int index = 0; index < 5000; ++index)
        ASSERT_EQ(collection->GetOctets(index).GetAddress(), 0x0A000000U + index + 1);
}

TEST_F(OctetsCollectionList, GrowthIsAmortised) {
    const Owner collection = CreateOctetsCollection();
    const Mark mark;
    const Octets octets;
    for (int count = 0; count < 4096; ++count)
        collection->Add(octets);
    // Two copies an element (the argument, the element), at most two more for moving house.
    EXPECT_LE(mark.Requests(), 4096U * 5);
}

TEST_F(OctetsCollectionList, AddCollectionAppendsAllInOrderBehindWhatIsThere) {
    const Owner source = CollectionOf(3);
    const Owner collection = CreateOctetsCollection();
    collection->Add(Octets(1, 2, 3, 4));
    collection->AddCollection(*source);
    EXPECT_EQ(ElementsOf(*collection), (Lines{"1.2.3.4", "10.0.0.1", "10.0.0.2", "10.0.0.3"}));
    EXPECT_EQ(ElementsOf(*source), (Lines{"10.0.0.1", "10.0.0.2", "10.0.0.3"}));
    EXPECT_EQ(CountOf(*source), 1);
}

TEST_F(OctetsCollectionList, EmptyArgumentIsAskedForItsCountAlone) {
    const RecordingCollection source([] { return 0U; });
    const Owner collection = CollectionOf(1);
    collection->AddCollection(source);
    EXPECT_EQ(source.Calls(), Lines{"GetCount"});
    EXPECT_EQ(ElementsOf(*collection), Lines{"10.0.0.1"});
}

TEST_F(OctetsCollectionList, CountIsAskedForAgainAfterTheOnlyElement) {
    const RecordingCollection source([] { return 1U; });
    const Owner collection = CreateOctetsCollection();
    collection->AddCollection(source);
    EXPECT_EQ(source.Calls(), (Lines{"GetCount", "GetOctets(0)", "GetCount"}));
    EXPECT_EQ(ElementsOf(*collection), Lines{"192.168.0.0"});
}

TEST_F(OctetsCollectionList, CountIsAskedForAgainAfterEveryElement) {
    const RecordingCollection source([] { return 2U; });
    const Owner collection = CreateOctetsCollection();
    collection->AddCollection(source);
    EXPECT_EQ(source.Calls(),
              (Lines{"GetCount", "GetOctets(0)", "GetCount", "GetOctets(1)", "GetCount"}));
    EXPECT_EQ(ElementsOf(*collection), (Lines{"192.168.0.0", "192.168.0.1"}));
}

TEST_F(OctetsCollectionList, ArgumentThatGrowsWhileItIsReadIsReadToItsEnd) {
    unsigned int asked = 0;
    const RecordingCollection source([&] { return std::min(++asked, 3U); });
    const Owner collection = CreateOctetsCollection();
    collection->AddCollection(source);
    EXPECT_EQ(source.Calls(), (Lines{"GetCount", "GetOctets(0)", "GetCount", "GetOctets(1)",
                                     "GetCount", "GetOctets(2)", "GetCount"}));
    EXPECT_EQ(ElementsOf(*collection), (Lines{"192.168.0.0", "192.168.0.1", "192.168.0.2"}));
}

TEST_F(OctetsCollectionList, ArgumentThatShrinksWhileItIsReadEndsTheReading) {
    unsigned int count = 5;
    const RecordingCollection source([&] { return count -= 2; });
    const Owner collection = CreateOctetsCollection();
    collection->AddCollection(source);
    EXPECT_EQ(source.Calls(), (Lines{"GetCount", "GetOctets(0)", "GetCount"}));
    EXPECT_EQ(ElementsOf(*collection), Lines{"192.168.0.0"});
}

TEST_F(OctetsCollectionList, FetchedValueIsGoneBeforeTheCountIsAskedForAgain) {
    std::vector<long long> blocks;
    const Owner collection = CreateOctetsCollection();
    const Mark mark;
    const RecordingCollection source([&] {
        const Scripted::Allocations::Uncounted uncounted;
        blocks.push_back(mark.LiveBlocks());
        return 2U;
    });
    collection->AddCollection(source);
    // The room for the elements is one block, each element another.
    EXPECT_EQ(blocks, (std::vector<long long>{0, 2, 3}));
}

TEST_F(OctetsCollectionList, WhatTheArgumentThrowsPassesAndKeepsWhatWasAppended) {
    unsigned int asked = 0;
    const RecordingCollection source([&] {
        if (++asked == 3) throw std::runtime_error("gone");
        return 5U;
    });
    const Owner collection = CreateOctetsCollection();
    EXPECT_THROW(collection->AddCollection(source), std::runtime_error);
    EXPECT_EQ(ElementsOf(*collection), (Lines{"192.168.0.0", "192.168.0.1"}));
}

TEST_F(OctetsCollectionList, AssignmentThroughTheInterfaceDoesNothing) {
    const Owner target = CollectionOf(2);
    const Owner source = CollectionOf(1);
    OctetsCollection& result = (*target = *source);
    EXPECT_EQ(&result, target.Get());
    EXPECT_EQ(ElementsOf(*target), (Lines{"10.0.0.1", "10.0.0.2"}));
    EXPECT_EQ(ElementsOf(*source), Lines{"10.0.0.1"});
    EXPECT_EQ(CountOf(*target), 1);
}

TEST_F(OctetsCollectionList, AssignmentAsksNeitherSide) {
    RecordingCollection target([] { return 1U; });
    const RecordingCollection source([] { return 2U; });
    OctetsCollection& interface = target;
    EXPECT_EQ(&(interface = source), &interface);
    EXPECT_EQ(target.Calls(), Lines());
    EXPECT_EQ(source.Calls(), Lines());
}

TEST_F(OctetsCollectionList, CopyOfASubclassStartsItsOwnCount) {
    const Owner source = CollectionOf(2);
    const Owner copy = new OctetsCollectionImpl(dynamic_cast<OctetsCollectionImpl&>(*source));
    source->Add(Octets(1, 2, 3, 4));
    EXPECT_EQ(CountOf(*copy), 1);
    EXPECT_EQ(ElementsOf(*copy), (Lines{"10.0.0.1", "10.0.0.2"}));
}

TEST_F(OctetsCollectionList, FactoryFailsWithBadAllocAndLeaksNothing) {
    const Mark mark;
    const FailNth failing(1);
    EXPECT_THROW(CreateOctetsCollection(), std::bad_alloc);
    EXPECT_EQ(mark.LiveBlocks(), 0);
}

// Fails each allocation of the operation in turn, on a new collection of three elements each time.
template <class Operation>
void ExpectEveryAllocationToMatter(Operation operation) {
    bool happened = true;
    for (std::size_t number = 1; happened; ++number) {
        const Owner collection = CollectionOf(3);
        const Mark mark;
        bool threw = false;
        {
            const FailNth failing(number);
            try {
                operation(*collection);
            } catch (const std::bad_alloc&) {
                threw = true;
            }
            happened = failing.Happened();
        }
        EXPECT_EQ(threw, happened) << "allocation " << number;
        ASSERT_LT(number, 100U);
        if (happened)
            EXPECT_EQ(ElementsOf(*collection), (Lines{"10.0.0.1", "10.0.0.2", "10.0.0.3"}));
        else
            EXPECT_GT(number, 1U);
    }
}

TEST_F(OctetsCollectionList, AddFailsWithBadAllocAndChangesNothing) {
    const Octets octets(1, 2, 3, 4);
    ExpectEveryAllocationToMatter([&](OctetsCollection& collection) { collection.Add(octets); });
}

TEST_F(OctetsCollectionList, AddOfEachLengthFailsWithBadAllocAndChangesNothing) {
    const Octets octets(1, 2, 3, 4);
    for (unsigned int count = 0; count < 20; ++count) {
        const Owner collection = CollectionOf(count);
        const Lines before = ElementsOf(*collection);
        const Mark mark;
        {
            const FailNth failing(2);  // the first is the argument's
            EXPECT_THROW(collection->Add(octets), std::bad_alloc);
        }
        EXPECT_EQ(mark.LiveBlocks(), 0);
        EXPECT_EQ(ElementsOf(*collection), before);
    }
}

TEST_F(OctetsCollectionList, AddCollectionFailsWithBadAllocAtTheFirstElement) {
    const Owner source = CollectionOf(1);
    ExpectEveryAllocationToMatter(
        [&](OctetsCollection& collection) { collection.AddCollection(*source); });
}

TEST_F(OctetsCollectionList, GetOctetsFailsWithBadAlloc) {
    const Owner collection = CollectionOf(1);
    const FailNth failing(1);
    EXPECT_THROW(collection->GetOctets(0), std::bad_alloc);
}

// The one member of a list, which nothing else gives access to.
using Elements = std::vector<Octets>;
Elements OctetsCollectionImpl::*ElementsMember();
template <Elements OctetsCollectionImpl::*Member>
struct ExposedElements {
    friend Elements OctetsCollectionImpl::*ElementsMember() { return Member; }
};
template struct ExposedElements<&OctetsCollectionImpl::elements_>;

// Makes a list believe that it is full, without the memory for that, until the scope ends. Only
// what asks for the list's length may be done with it meanwhile.
class BelievedFull {
public:
    explicit BelievedFull(OctetsCollectionImpl& list) : elements_(list.*ElementsMember()) {
        const std::uintptr_t begin = sizeof(Octets);
        const std::uintptr_t end = begin + elements_.max_size() * sizeof(Octets);
        Overwrite({begin, end, end});
    }
    ~BelievedFull() { Overwrite({}); }
    BelievedFull(const BelievedFull&) = delete;
    BelievedFull& operator=(const BelievedFull&) = delete;

private:
    using Pointers = std::array<std::uintptr_t, 3>;  // first, end, end of the room

    void Overwrite(const Pointers& pointers) {
        static_assert(sizeof(Pointers) == sizeof(Elements));
        std::memcpy(static_cast<void*>(&elements_), pointers.data(), sizeof pointers);
    }

    Elements& elements_;
};

TEST_F(OctetsCollectionList, OneElementPastTheLongestPossibleListIsRefusedWithTheText) {
    OctetsCollectionImpl list;
    const Owner other = CollectionOf(1);
    const BelievedFull full(list);
    const std::function<void()> operations[] = {[&] { list.Add(Octets(10, 0, 0, 1)); },
                                                [&] { list.AddCollection(*other); }};
    for (const auto& operation : operations) {
        try {
            operation();
            FAIL() << "nothing thrown";
        } catch (const std::length_error& caught) {
            EXPECT_STREQ(caught.what(), "vector<T> too long");
        }
    }
}

}  // namespace
}  // namespace FoundationTests

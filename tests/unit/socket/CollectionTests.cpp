// SocketCollection as a list: what stands in it, and who holds whom.
#include <array>
#include <climits>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "CollectionFixture.h"
#include "support/ForeignSocket.h"

namespace SocketTests {
namespace {

constexpr unsigned int NotFound = 0xFFFFFFFFU;
constexpr int AnyEvents[] = {0, 1, 2, 3, 4, -1, INT_MAX, INT_MIN};

class CollectionContents : public SocketTest {};

TEST_F(CollectionContents, NewOneIsEmptyAndAsksNothing) {
    const Collection collection = NewCollection();
    EXPECT_EQ(collection->GetCount(), 0U);
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(CollectionContents, EachCallMakesAnother) {
    const auto socket = MakeSocket();
    const Collection one = NewCollection();
    const Collection other = NewCollection();
    one->Add(socket.Get(), EVENT_READ);
    EXPECT_NE(one, other);
    EXPECT_EQ(other->GetCount(), 0U);
}

TEST_F(CollectionContents, WithoutMemoryThereIsNone) {
    const Allocations::Mark mark;
    std::size_t n = 1;
    for (; RunsOutOfMemory(n, [] { NewCollection(); }); ++n)
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
    EXPECT_GT(n, 1U);
}

TEST_F(CollectionContents, AddAppendsAndTakesAReference) {
    const auto one = MakeSocket();
    const auto other = MakeSocket();
    const Collection collection = NewCollection();
    collection->Add(other.Get(), EVENT_CLOSE);
    collection->Add(one.Get(), EVENT_ACCEPT);
    collection->Add(other.Get(), EVENT_WRITE);
    EXPECT_EQ(collection->GetCount(), 3U);
    EXPECT_EQ(EntriesOf(*collection),
              (Entries{{other.Get(), 3}, {one.Get(), 0}, {other.Get(), 2}}));
    EXPECT_EQ(ReferencesOf(*one), 2);
    EXPECT_EQ(ReferencesOf(*other), 3);
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(CollectionContents, AnyEventIsTakenAndTheSameEntryAgain) {
    const auto socket = MakeSocket();
    const Collection collection = NewCollection();
    Entries expected;
    for (int time = 0; time < 2; ++time) {
        for (const int event : AnyEvents) {
            collection->Add(socket.Get(), event);
            expected.emplace_back(socket.Get(), event);
        }
    }
    EXPECT_EQ(EntriesOf(*collection), expected);
    EXPECT_EQ(ReferencesOf(*socket), 1 + 16);
}

TEST_F(CollectionContents, ThousandsOfEntriesKeepTheirPlaces) {
    const auto socket = MakeSocket();
    const Collection collection = NewCollection();
    for (int event = 0; event < 2000; ++event)
        collection->Add(socket.Get(), event);
    ASSERT_EQ(collection->GetCount(), 2000U);
    for (unsigned int index = 0; index < 2000; ++index)
        ASSERT_EQ(collection->GetEvent(index), static_cast<int>(index));
}

TEST_F(CollectionContents, ReturnedSocketIsAReferenceOfTheCallers) {
    const auto socket = MakeSocket();
    const Collection collection = NewCollection();
    collection->Add(socket.Get(), EVENT_READ);
    {
        const VelBase::ReturnPtrI<Socket> returned = collection->GetSocket(0);
        EXPECT_EQ(returned.Get(), socket.Get());
        EXPECT_EQ(ReferencesOf(*socket), 3);
    }
    EXPECT_EQ(ReferencesOf(*socket), 2);
}

TEST_F(CollectionContents, SocketStaysOpenWhileItIsRegistered) {
    auto socket = MakeSocket();
    const Collection collection = NewCollection();
    collection->Add(socket.Get(), EVENT_READ);
    collection->Add(socket.Get(), EVENT_WRITE);
    Socket* const registered = socket.Get();
    socket = {};
    EXPECT_EQ(OpenSockets(), Lines{"socket 1001"});
    collection->Remove(registered, EVENT_READ);
    EXPECT_EQ(OpenSockets(), Lines{"socket 1001"});
    EXPECT_TRUE(registered->IsValid());
    collection->Remove(registered, EVENT_WRITE);
    EXPECT_EQ(OpenSockets(), Lines());
}

TEST_F(CollectionContents, DestroyReleasesEverySocketAndFreesTheCollection) {
    const auto one = MakeSocket();
    auto other = MakeSocket();
    const Allocations::Mark mark;
    SocketCollection* const collection = CreateSocketCollection();
    for (int event = 0; event < 3; ++event)
        collection->Add(one.Get(), event);
    collection->Add(other.Get(), EVENT_READ);
    other = {};
    EXPECT_EQ(OpenSockets().size(), 2U);
    collection->Destroy();
    EXPECT_EQ(ReferencesOf(*one), 1);
    EXPECT_EQ(OpenSockets(), Lines{"socket 1001"});
    EXPECT_LT(mark.LiveBlocks(), 0);  // the other socket's
}

TEST_F(CollectionContents, DestroyOfAnEmptyOneFreesIt) {
    const Allocations::Mark mark;
    CreateSocketCollection()->Destroy();
    EXPECT_EQ(mark.LiveBlocks(), 0);
}

TEST_F(CollectionContents, FindTellsTheFirstThatMatchesInSocketAndEvent) {
    const auto one = MakeSocket();
    const auto other = MakeSocket();
    const Collection collection = NewCollection();
    for (const auto& [socket, event] :
         {std::pair(&one, 1), {&other, 1}, {&other, 2}, {&one, 1}, {&one, -1}, {&other, 2}})
        collection->Add(socket->Get(), event);
    EXPECT_EQ(collection->Find(one.Get(), 1), 0U);
    EXPECT_EQ(collection->Find(other.Get(), 1), 1U);
    EXPECT_EQ(collection->Find(other.Get(), 2), 2U);
    EXPECT_EQ(collection->Find(one.Get(), -1), 4U);
    EXPECT_EQ(collection->Find(one.Get(), 2), NotFound);
    EXPECT_EQ(collection->Find(other.Get(), -1), NotFound);
    EXPECT_EQ(collection->Find(one.Get(), 0), NotFound);
    EXPECT_EQ(ReferencesOf(*one), 4);
    EXPECT_EQ(ReferencesOf(*other), 4);
}

TEST_F(CollectionContents, NothingIsFoundInAnEmptyOne) {
    const auto socket = MakeSocket();
    const Collection collection = NewCollection();
    for (const int event : AnyEvents)
        EXPECT_EQ(collection->Find(socket.Get(), event), NotFound);
}

TEST_F(CollectionContents, AddWithoutMemoryTakesNoReferenceAndChangesNothing) {
    const auto socket = MakeSocket();
    const Collection collection = NewCollection();
    collection->Add(socket.Get(), EVENT_READ);
    const Allocations::Mark mark;
    std::size_t n = 1;
    for (; RunsOutOfMemory(n, [&] { collection->Add(socket.Get(), EVENT_WRITE); }); ++n) {
        EXPECT_EQ(ReferencesOf(*socket), 2) << n;
        EXPECT_EQ(EntriesOf(*collection), (Entries{{socket.Get(), EVENT_READ}})) << n;
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
    }
    EXPECT_GT(n, 1U);
    EXPECT_EQ(ReferencesOf(*socket), 3);
}

// The one member of a collection, which nothing else gives access to. Its type has no name outside.
template <auto Member>
struct ExposedEntries {
    friend constexpr auto EntriesMember() { return Member; }
};
constexpr auto EntriesMember();
template struct ExposedEntries<&SocketCollectionImpl::entries_>;

// Makes a list believe that it is full, without the memory for that, until the scope ends. Only
// what asks for the list's length may be done with it meanwhile.
template <class List>
class BelievedFull {
public:
    explicit BelievedFull(List& list) : list_(list) {
        std::memcpy(words_.data(), static_cast<const void*>(&list), sizeof words_);
        Overwrite({words_[0], words_[1], list.max_size()});
    }
    ~BelievedFull() { Overwrite(words_); }
    BelievedFull(const BelievedFull&) = delete;
    BelievedFull& operator=(const BelievedFull&) = delete;

private:
    using Words = std::array<std::uintptr_t, 3>;  // first, last, length

    void Overwrite(const Words& words) {
        static_assert(sizeof words == sizeof(List));
        std::memcpy(static_cast<void*>(&list_), words.data(), sizeof words);
    }

    List& list_;
    Words words_;
};

TEST_F(CollectionContents, OneEntryPastTheLongestPossibleListIsRefusedWithTheText) {
    const auto socket = MakeSocket();
    const Collection collection = NewCollection();
    collection->Add(socket.Get(), EVENT_READ);
    auto& entries = dynamic_cast<SocketCollectionImpl&>(*collection).*EntriesMember();
    {
        const BelievedFull full(entries);
        try {
            collection->Add(socket.Get(), EVENT_WRITE);
            FAIL() << "nothing thrown";
        } catch (const std::length_error& caught) {
            EXPECT_STREQ(caught.what(), "list<T> too long");
        }
    }
    EXPECT_EQ(EntriesOf(*collection), (Entries{{socket.Get(), EVENT_READ}}));
    EXPECT_EQ(ReferencesOf(*socket), 2);
}

TEST_F(CollectionContents, NothingElseNeedsMemory) {
    const auto one = MakeSocket();
    const auto other = MakeSocket();
    const Collection collection = NewCollection();
    for (const int event : {0, 1, 2})
        collection->Add(one.Get(), event);
    const Allocations::Mark mark;
    EXPECT_EQ(collection->GetCount(), 3U);
    EXPECT_EQ(collection->GetSocket(2).Get(), one.Get());
    EXPECT_EQ(collection->GetEvent(2), 2);
    EXPECT_EQ(collection->Find(other.Get(), 2), NotFound);
    collection->Remove(one.Get(), 1);
    EXPECT_EQ(mark.Requests(), 0U);
}

TEST_F(CollectionContents, SocketOfAnotherImplementationIsKeptLikeAny) {
    const VelBase::ReturnPtrI<Support::ForeignSocket> foreign(new Support::ForeignSocket);
    const auto own = MakeSocket();
    const Collection collection = NewCollection();
    collection->Add(foreign.Get(), EVENT_READ);
    collection->Add(own.Get(), EVENT_READ);
    EXPECT_EQ(collection->Find(foreign.Get(), EVENT_READ), 0U);
    EXPECT_EQ(collection->Find(own.Get(), EVENT_READ), 1U);
    collection->Remove(foreign.Get(), EVENT_READ);
    EXPECT_EQ(EntriesOf(*collection), (Entries{{own.Get(), EVENT_READ}}));
    EXPECT_EQ(foreign->GetReferenceCount(), 1);
}

template <class Derived, class Base>
concept DerivesVirtually = std::is_base_of_v<Base, Derived> && !requires(Base * base) {
    static_cast<Derived*>(base);
};

TEST_F(CollectionContents, ImplementationDerivesVirtuallyAndIsFinal) {
    static_assert(DerivesVirtually<SocketCollectionImpl, SocketCollection>);
    static_assert(std::is_final_v<SocketCollectionImpl>);
    static_assert(!std::is_base_of_v<VelBase::ReferenceCounted, SocketCollectionImpl>);
    const Collection collection = NewCollection();
    EXPECT_NE(dynamic_cast<SocketCollectionImpl*>(collection.get()), nullptr);
}

}  // namespace
}  // namespace SocketTests

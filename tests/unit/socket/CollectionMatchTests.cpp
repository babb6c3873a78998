// SocketCollection: which entries match a socket and an event, and what becomes of them.
#include <climits>

#include "CollectionFixture.h"

namespace SocketTests {
namespace {

constexpr unsigned int NotFound = 0xFFFFFFFFU;
constexpr int AnyEvents[] = {0, 1, 2, 3, 4, -1, INT_MAX, INT_MIN};

class CollectionMatch : public SocketTest {};

TEST_F(CollectionMatch, EntriesMatchByHandle) {
    const auto one = Twin(1001);
    const auto twin = Twin(1001);
    const auto other = Twin(1002);
    const Collection collection = NewCollection();
    collection->Add(other.Get(), EVENT_READ);
    collection->Add(one.Get(), EVENT_READ);
    EXPECT_EQ(collection->Find(twin.Get(), EVENT_READ), 1U);
    collection->Remove(twin.Get(), EVENT_READ);
    EXPECT_EQ(EntriesOf(*collection), (Entries{{other.Get(), EVENT_READ}}));
    EXPECT_EQ(ReferencesOf(*one), 1);
    EXPECT_EQ(ReferencesOf(*twin), 1);
}

TEST_F(CollectionMatch, AllClosedSocketsMatchEachOther) {
    const auto closed = MakeClosedSocket();
    const auto another = MakeClosedSocket();
    const auto open = MakeSocket();
    const Collection collection = NewCollection();
    collection->Add(open.Get(), EVENT_READ);
    collection->Add(closed.Get(), EVENT_READ);
    EXPECT_EQ(collection->Find(another.Get(), EVENT_READ), 1U);
    open->Close();
    EXPECT_EQ(collection->Find(another.Get(), EVENT_READ), 0U);
    collection->Remove(another.Get(), EVENT_READ);
    EXPECT_EQ(collection->GetCount(), 0U);
}

// Says what a test wants, and writes down what it was compared with.
class ComparingSocket : public SocketImpl {
public:
    using SocketImpl::SocketImpl;

    bool IsSameSocket(const Socket& other) const override {
        compared.push_back(&other);
        return isSame;
    }

    bool isSame = false;
    mutable std::vector<const Socket*> compared;
};

TEST_F(CollectionMatch, EntrysOwnSocketIsAskedWhetherItIsTheSame) {
    const auto unlike = MakeSocket<ComparingSocket>();
    const auto like = MakeSocket<ComparingSocket>();
    const auto argument = MakeSocket<ComparingSocket>();
    like->isSame = true;
    const Collection collection = NewCollection();
    collection->Add(unlike.Get(), EVENT_READ);
    collection->Add(like.Get(), EVENT_READ);
    EXPECT_EQ(collection->Find(argument.Get(), EVENT_READ), 1U);
    collection->Remove(argument.Get(), EVENT_READ);
    EXPECT_EQ(EntriesOf(*collection), (Entries{{unlike.Get(), EVENT_READ}}));
    const std::vector<const Socket*> twice(2, argument.Get());
    EXPECT_EQ(unlike->compared, twice);
    EXPECT_EQ(like->compared, twice);
    EXPECT_TRUE(argument->compared.empty());
}

TEST_F(CollectionMatch, RemoveWithoutAMatchDoesNothing) {
    const auto one = MakeSocket();
    const auto other = MakeSocket();
    const Collection collection = NewCollection();
    collection->Remove(one.Get(), EVENT_READ);
    collection->Add(one.Get(), EVENT_READ);
    for (const int event : AnyEvents) {
        collection->Remove(other.Get(), event);
        if (event != EVENT_READ) collection->Remove(one.Get(), event);
    }
    EXPECT_EQ(EntriesOf(*collection), (Entries{{one.Get(), EVENT_READ}}));
    EXPECT_EQ(ReferencesOf(*one), 2);
    EXPECT_EQ(ReferencesOf(*other), 1);
    EXPECT_EQ(Transcript(), Lines());
}

// Each pattern of six entries, first and last, neighbours and all among them.
TEST_F(CollectionMatch, RemoveTakesOutEveryMatchAndKeepsTheOrderOfTheRest) {
    constexpr int Length = 6;
    const auto one = MakeSocket();
    const auto other = MakeSocket();
    for (unsigned int pattern = 0; pattern < 1U << Length; ++pattern) {
        const Collection collection = NewCollection();
        Entries rest;
        for (int place = 0; place < Length; ++place) {
            const bool isMatch = (pattern >> place & 1U) != 0;
            // What stays differs in the socket or in the event, and each from its neighbours.
            Socket* const socket = isMatch || place % 2 == 0 ? one.Get() : other.Get();
            const int event = isMatch ? EVENT_WRITE : place % 2 == 0 ? 10 + place : EVENT_WRITE;
            collection->Add(socket, event);
            if (!isMatch) rest.emplace_back(socket, event);
        }
        collection->Remove(one.Get(), EVENT_WRITE);
        ASSERT_EQ(EntriesOf(*collection), rest) << pattern;
        ASSERT_EQ(ReferencesOf(*one) + ReferencesOf(*other), 2 + static_cast<int>(rest.size()))
            << pattern;
        collection->Add(other.Get(), EVENT_CLOSE);
        ASSERT_EQ(collection->GetEvent(collection->GetCount() - 1), EVENT_CLOSE) << pattern;
    }
}

TEST_F(CollectionMatch, RemoveMayEndTheVerySocketThatItIsGiven) {
    const auto other = MakeSocket();
    for (const int entries : {1, 2, 5}) {
        auto socket = MakeSocket();
        Socket* const given = socket.Get();
        const Collection collection = NewCollection();
        for (int entry = 0; entry < entries; ++entry) {
            collection->Add(given, EVENT_READ);
            collection->Add(other.Get(), EVENT_READ);
        }
        socket = {};
        collection->Remove(given, EVENT_READ);
        EXPECT_EQ(EntriesOf(*collection),
                  Entries(static_cast<std::size_t>(entries), {other.Get(), EVENT_READ}));
        EXPECT_EQ(OpenSockets(), Lines{"socket 1001"});
    }
}

// Tells when it ends.
class MortalSocket : public SocketImpl {
public:
    using SocketImpl::SocketImpl;
    ~MortalSocket() override { *isAlive = false; }
    MortalSocket(const MortalSocket&) = delete;
    MortalSocket& operator=(const MortalSocket&) = delete;

    bool* isAlive = nullptr;
};

class WatchingSocket : public SocketImpl {
public:
    using SocketImpl::SocketImpl;
    bool IsSameSocket(const Socket&) const override {
        EXPECT_TRUE(*isOtherAlive);
        ++compared;
        return false;
    }

    const bool* isOtherAlive = nullptr;
    mutable int compared = 0;
};

TEST_F(CollectionMatch, GivenSocketLivesUntilTheLastEntryHasBeenComparedWithIt) {
    bool isAlive = true;
    auto mortal = MakeSocket<MortalSocket>();
    mortal->isAlive = &isAlive;
    const auto watching = MakeSocket<WatchingSocket>();
    watching->isOtherAlive = &isAlive;
    const Collection collection = NewCollection();
    collection->Add(mortal.Get(), EVENT_READ);
    collection->Add(watching.Get(), EVENT_READ);
    MortalSocket* const given = mortal.Get();
    mortal = {};
    collection->Remove(given, EVENT_READ);
    EXPECT_FALSE(isAlive);
    EXPECT_EQ(watching->compared, 1);
}

TEST_F(CollectionMatch, IndexesMoveUpBehindWhatIsRemoved) {
    const auto socket = MakeSocket();
    const Collection collection = NewCollection();
    for (const int event : {0, 1, 2, 3})
        collection->Add(socket.Get(), event);
    collection->Remove(socket.Get(), 1);
    EXPECT_EQ(collection->Find(socket.Get(), 0), 0U);
    EXPECT_EQ(collection->Find(socket.Get(), 1), NotFound);
    EXPECT_EQ(collection->Find(socket.Get(), 2), 1U);
    EXPECT_EQ(collection->Find(socket.Get(), 3), 2U);
    EXPECT_EQ(collection->GetEvent(1), 2);
}

}  // namespace
}  // namespace SocketTests

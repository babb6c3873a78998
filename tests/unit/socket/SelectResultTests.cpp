// SocketCollection::Select: what is found ready.
#include <climits>
#include <stdexcept>

#include "CollectionFixture.h"

namespace SocketTests {
namespace {

constexpr int Events[] = {EVENT_ACCEPT, EVENT_READ, EVENT_WRITE, EVENT_CLOSE};

// The status that tells of the event on a readable socket, or one that does not exist.
int StatusFor(int event) {
    switch (event) {
        case EVENT_ACCEPT:
            return 1;
        case EVENT_READ:
            return 2;
        case EVENT_CLOSE:
            return 3;
        default:
            return INT_MIN;
    }
}

class SelectResultReady : public SocketTest {
protected:
    static constexpr Winsock::Handle One = 1001;
    static constexpr Winsock::Handle Other = 1002;

    static Collection Select(SocketCollection& collection) {
        return Collection(collection.Select(1));
    }

    // The entries found ready.
    static Entries ReadyOf(SocketCollection& collection) {
        const Collection ready = Select(collection);
        EXPECT_NE(ready, nullptr);
        return ready == nullptr ? Entries() : EntriesOf(*ready);
    }
};

TEST_F(SelectResultReady, EventMustFitTheStatus) {
    for (const int event : Events) {
        for (const int status : {0, 1, 2, 3, 4, -1, INT_MAX}) {
            const auto socket = SocketOfStatus(One, status);
            const Collection collection = NewCollection();
            collection->Add(socket.Get(), event);
            collection->Add(socket.Get(), 4);  // has the socket in the read set looked at as well
            collection->Add(Twin(Other).Get(), EVENT_READ);
            collection->Add(Twin(Other).Get(), EVENT_WRITE);
            On::Select().Ready({One});
            EXPECT_EQ(ReadyOf(*collection),
                      status == StatusFor(event) ? Entries({{socket.Get(), event}}) : Entries())
                << "event " << event << ", status " << status;
        }
    }
}

TEST_F(SelectResultReady, StatusIsAskedForThreeTimesWhateverTheEvent) {
    for (const int event : {0, 1, 2, 3, 4, -1, INT_MAX}) {
        for (const int status : {0, 1, 2, 3}) {
            const auto socket = SocketOfStatus(One, status);
            const Collection collection = NewCollection();
            collection->Add(socket.Get(), event);
            collection->Add(Twin(Other).Get(), EVENT_READ);
            On::Select().Ready({One, Other});
            Select(*collection);
            EXPECT_EQ(socket->asked, 3) << "event " << event << ", status " << status;
        }
    }
}

TEST_F(SelectResultReady, StatusIsAskedForAgainForEachEntryOfASocket) {
    const auto socket = SocketOfStatus(One, STATUS_DATA_PENDING);
    const Collection collection = NewCollection();
    for (const int event : {EVENT_READ, EVENT_READ, EVENT_WRITE, EVENT_CLOSE})
        collection->Add(socket.Get(), event);
    On::Select().Ready({One});
    EXPECT_EQ(ReadyOf(*collection),
              (Entries{{socket.Get(), EVENT_READ}, {socket.Get(), EVENT_READ}}));
    EXPECT_EQ(socket->asked, 12);
}

TEST_F(SelectResultReady, StatusIsNotAskedForWhatIsNotReadable) {
    const auto socket = SocketOfStatus(One, STATUS_DATA_PENDING);
    const Collection collection = NewCollection();
    collection->Add(socket.Get(), EVENT_READ);
    collection->Add(socket.Get(), EVENT_WRITE);
    On::Select().Ready({}, {One});
    EXPECT_EQ(ReadyOf(*collection), (Entries{{socket.Get(), EVENT_WRITE}}));
    EXPECT_EQ(socket->asked, 0);
}

// Each of the three tests takes its own answer: the first is for accepts, the second for reads, the
// third for closes.
TEST_F(SelectResultReady, EachTestAsksAfresh) {
    for (const int event : {EVENT_ACCEPT, EVENT_READ, EVENT_CLOSE}) {
        for (int answers = 0; answers < 64; ++answers) {
            const int statuses[] = {answers % 4, answers / 4 % 4, answers / 16};
            const auto socket = SocketOfStatus(One, 0);
            socket->answer = [&](int question) { return statuses[question % 3]; };
            const Collection collection = NewCollection();
            collection->Add(socket.Get(), event);
            On::Select().Ready({One});
            const bool isReady = (event == EVENT_ACCEPT && statuses[0] == 1) ||
                                 (event == EVENT_READ && statuses[1] == 2) ||
                                 (event == EVENT_CLOSE && statuses[2] == 3);
            ASSERT_EQ(ReadyOf(*collection), isReady ? Entries({{socket.Get(), event}}) : Entries())
                << "event " << event << ", answers " << answers;
        }
    }
}

TEST_F(SelectResultReady, DataThatArriveBetweenTheQuestionsCount) {
    const auto socket = MakeConnectedSocket();
    const Collection collection = NewCollection();
    collection->Add(socket.Get(), EVENT_READ);
    On::Select().Ready({One});
    On::Ioctlsocket().Returns(0).Returns(5).Returns(0);
    EXPECT_EQ(ReadyOf(*collection), (Entries{{socket.Get(), EVENT_READ}}));
    EXPECT_EQ(Transcript(),
              (Lines{"select(1002, {1001}, null, null, {1, 0})", "ioctlsocket(1001, 0x4004667F)",
                     "ioctlsocket(1001, 0x4004667F)", "ioctlsocket(1001, 0x4004667F)"}));
}

TEST_F(SelectResultReady, DataThatAreReadBetweenTheQuestionsLookLikeAClose) {
    const auto socket = MakeConnectedSocket();
    const Collection collection = NewCollection();
    collection->Add(socket.Get(), EVENT_CLOSE);
    On::Select().Ready({One}).Ready({One});
    On::Ioctlsocket().Returns(5).Returns(5).Returns(0).Returns(0).Returns(0).Returns(5);
    EXPECT_EQ(ReadyOf(*collection), (Entries{{socket.Get(), EVENT_CLOSE}}));
    EXPECT_EQ(ReadyOf(*collection), Entries());
}

TEST_F(SelectResultReady, ReadableListenerIsReportedForAcceptsOnly) {
    const auto listener = MakeSocket(STATE_LISTENING);
    const Collection collection = NewCollection();
    for (const int event : {EVENT_CLOSE, EVENT_READ, EVENT_ACCEPT})
        collection->Add(listener.Get(), event);
    On::Select().Ready({One});
    EXPECT_EQ(ReadyOf(*collection), (Entries{{listener.Get(), EVENT_ACCEPT}}));
    EXPECT_EQ(Transcript().size(), 1U);
}

TEST_F(SelectResultReady, ClosedConnectionIsReportedForClosesOnly) {
    const auto socket = MakeConnectedSocket();
    const Collection collection = NewCollection();
    for (const int event : {EVENT_ACCEPT, EVENT_READ, EVENT_CLOSE})
        collection->Add(socket.Get(), event);
    On::Select().Ready({One});
    EXPECT_EQ(ReadyOf(*collection), (Entries{{socket.Get(), EVENT_CLOSE}}));
}

// That the system does not answer counts as no data.
TEST_F(SelectResultReady, ConnectionWhoseDataCannotBeAskedForLooksClosed) {
    const auto socket = MakeConnectedSocket();
    const Collection collection = NewCollection();
    for (const int event : {EVENT_READ, EVENT_CLOSE})
        collection->Add(socket.Get(), event);
    On::Select().Ready({One});
    for (int question = 0; question < 6; ++question)
        On::Ioctlsocket().Fails(10050);
    EXPECT_EQ(ReadyOf(*collection), (Entries{{socket.Get(), EVENT_CLOSE}}));
    ExpectRecords({});
}

TEST_F(SelectResultReady, SocketThatNeitherListensNorIsConnectedIsNotReported) {
    for (const SocketState state : {STATE_CREATED, STATE_BOUND, STATE_CLOSED}) {
        const VelBase::ReturnPtrI<SocketImpl> socket(new SocketImpl(One, state));
        const Collection collection = NewCollection();
        for (const int event : {EVENT_ACCEPT, EVENT_READ, EVENT_CLOSE})
            collection->Add(socket.Get(), event);
        On::Select().Ready({One});
        EXPECT_EQ(ReadyOf(*collection), Entries()) << state;
        SetRouterFlag(ErrorCategory, 0);  // the handle is none of the system's
    }
}

TEST_F(SelectResultReady, WritableSocketIsReportedWhateverItsStatus) {
    for (const int status : {0, 1, 2, 3}) {
        const auto socket = SocketOfStatus(One, status);
        const Collection collection = NewCollection();
        collection->Add(socket.Get(), EVENT_WRITE);
        On::Select().Ready({}, {One});
        EXPECT_EQ(ReadyOf(*collection), (Entries{{socket.Get(), EVENT_WRITE}}));
        EXPECT_EQ(socket->asked, 0);
    }
}

TEST_F(SelectResultReady, WritableSocketIsReportedForWritesOnly) {
    const auto socket = SocketOfStatus(One, STATUS_NONE);
    const Collection collection = NewCollection();
    for (const int event : {0, 1, 2, 3, 4, -1})
        collection->Add(socket.Get(), event);
    On::Select().Ready({}, {One});
    EXPECT_EQ(ReadyOf(*collection), (Entries{{socket.Get(), EVENT_WRITE}}));
}

TEST_F(SelectResultReady, ReadableSocketIsNotReportedForWrites) {
    const auto socket = SocketOfStatus(One, STATUS_DATA_PENDING);
    const Collection collection = NewCollection();
    collection->Add(socket.Get(), EVENT_WRITE);
    collection->Add(socket.Get(), EVENT_READ);
    On::Select().Ready({One});
    EXPECT_EQ(ReadyOf(*collection), (Entries{{socket.Get(), EVENT_READ}}));
}

TEST_F(SelectResultReady, SocketReadyToReadAndToWriteIsListedTwiceInTheOrderOfItsEntries) {
    const auto socket = SocketOfStatus(One, STATUS_DATA_PENDING);
    for (const auto& [first, second] :
         {std::pair(EVENT_READ, EVENT_WRITE), {EVENT_WRITE, EVENT_READ}}) {
        const Collection collection = NewCollection();
        collection->Add(socket.Get(), first);
        collection->Add(socket.Get(), second);
        On::Select().Ready({One}, {One});
        EXPECT_EQ(ReadyOf(*collection), (Entries{{socket.Get(), first}, {socket.Get(), second}}));
    }
}

TEST_F(SelectResultReady, OrderIsThatOfTheList) {
    const auto one = SocketOfStatus(1001, STATUS_DATA_PENDING);
    const auto other = SocketOfStatus(1002, STATUS_LISTENING);
    const auto third = SocketOfStatus(1003, STATUS_IDLE);
    const Collection collection = NewCollection();
    const Entries entries = {{third.Get(), EVENT_CLOSE},
                             {one.Get(), EVENT_WRITE},
                             {other.Get(), EVENT_ACCEPT},
                             {one.Get(), EVENT_READ},
                             {other.Get(), EVENT_WRITE}};
    for (const auto& [socket, event] : entries)
        collection->Add(const_cast<Socket*>(socket), event);
    On::Select().Ready({1001, 1002, 1003}, {1002, 1001});
    EXPECT_EQ(ReadyOf(*collection), entries);
}

TEST_F(SelectResultReady, OnlyWhatTheSystemLeftInTheSetsIsReported) {
    const auto one = SocketOfStatus(One, STATUS_DATA_PENDING);
    const auto other = SocketOfStatus(Other, STATUS_DATA_PENDING);
    const Collection collection = NewCollection();
    collection->Add(one.Get(), EVENT_READ);
    collection->Add(other.Get(), EVENT_READ);
    collection->Add(one.Get(), EVENT_WRITE);
    collection->Add(other.Get(), EVENT_WRITE);
    On::Select().Ready({Other}, {One});
    EXPECT_EQ(ReadyOf(*collection), (Entries{{other.Get(), EVENT_READ}, {one.Get(), EVENT_WRITE}}));
    EXPECT_EQ(one->asked, 0);
}

TEST_F(SelectResultReady, EntriesOfOneHandleAreEachReported) {
    const auto one = SocketOfStatus(One, STATUS_DATA_PENDING);
    const auto twin = SocketOfStatus(One, STATUS_IDLE);
    const Collection collection = NewCollection();
    collection->Add(one.Get(), EVENT_READ);
    collection->Add(twin.Get(), EVENT_READ);
    collection->Add(twin.Get(), EVENT_CLOSE);
    On::Select().Ready({One});
    EXPECT_EQ(ReadyOf(*collection), (Entries{{one.Get(), EVENT_READ}, {twin.Get(), EVENT_CLOSE}}));
}

TEST_F(SelectResultReady, ResultMayBeEmpty) {
    const Collection collection = NewCollection();
    collection->Add(Twin(One).Get(), EVENT_READ);
    On::Select().Ready({One}).Returns(1);
    for (int time = 0; time < 2; ++time) {
        const Collection ready = Select(*collection);
        ASSERT_NE(ready, nullptr);
        EXPECT_EQ(ready->GetCount(), 0U);
    }
}

TEST_F(SelectResultReady, AnyResultOfTheSystemButNoneAndItsFailureIsACollection) {
    const auto socket = SocketOfStatus(One, STATUS_DATA_PENDING);
    const Collection collection = NewCollection();
    collection->Add(socket.Get(), EVENT_READ);
    for (const int result : {1, 2, 64, INT_MAX}) {
        On::Select().Returns(result, {One});
        EXPECT_EQ(ReadyOf(*collection), (Entries{{socket.Get(), EVENT_READ}})) << result;
    }
}

TEST_F(SelectResultReady, ResultHoldsReferencesOfItsOwn) {
    auto socket = SocketOfStatus(One, STATUS_DATA_PENDING);
    Collection collection = NewCollection();
    collection->Add(socket.Get(), EVENT_READ);
    collection->Add(socket.Get(), EVENT_WRITE);
    On::Select().Ready({One}, {One});
    Collection ready = Select(*collection);
    EXPECT_EQ(ReferencesOf(*socket), 1 + 2 + 2);
    collection.reset();
    EXPECT_EQ(ReferencesOf(*socket), 1 + 2);
    EXPECT_EQ(EntriesOf(*ready),
              (Entries{{socket.Get(), EVENT_READ}, {socket.Get(), EVENT_WRITE}}));
    ready.reset();
    EXPECT_EQ(ReferencesOf(*socket), 1);
}

TEST_F(SelectResultReady, ResultAndSourceAreIndependent) {
    const auto socket = SocketOfStatus(One, STATUS_DATA_PENDING);
    const Collection collection = NewCollection();
    collection->Add(socket.Get(), EVENT_READ);
    On::Select().Ready({One});
    const Collection ready = Select(*collection);
    EXPECT_NE(ready, collection);
    ready->Add(socket.Get(), EVENT_WRITE);
    collection->Remove(socket.Get(), EVENT_READ);
    EXPECT_EQ(EntriesOf(*ready),
              (Entries{{socket.Get(), EVENT_READ}, {socket.Get(), EVENT_WRITE}}));
    EXPECT_EQ(EntriesOf(*collection), Entries());
}

TEST_F(SelectResultReady, SourceStaysAsItWas) {
    const auto socket = SocketOfStatus(One, STATUS_DATA_PENDING);
    const Collection collection = NewCollection();
    const Entries entries = {{socket.Get(), EVENT_READ}, {socket.Get(), -1}, {socket.Get(), 2}};
    for (const auto& [added, event] : entries)
        collection->Add(const_cast<Socket*>(added), event);
    On::Select().Ready({One}, {One});
    Select(*collection);
    EXPECT_EQ(EntriesOf(*collection), entries);
    EXPECT_EQ(ReferencesOf(*socket), 1 + 3);
}

TEST_F(SelectResultReady, ResultCanBeSelectedFromItself) {
    const auto socket = SocketOfStatus(One, STATUS_DATA_PENDING);
    const Collection collection = NewCollection();
    collection->Add(socket.Get(), EVENT_READ);
    collection->Add(Twin(Other).Get(), EVENT_READ);
    On::Select().Ready({One}).Ready({One});
    const Collection ready = Select(*collection);
    EXPECT_EQ(ReadyOf(*ready), (Entries{{socket.Get(), EVENT_READ}}));
    EXPECT_EQ(LastEventOf("select").text, "select(1002, {1001}, null, null, {1, 0})");
}

// A collection in which each wait finds three entries ready.
class SelectResultThatFails : public SelectResultReady {
protected:
    void Fill(SocketCollection& collection) {
        for (const int event : {EVENT_READ, EVENT_WRITE, EVENT_READ})
            collection.Add(socket_.Get(), event);
    }
    void TearDown() override {
        socket_ = {};
        SelectResultReady::TearDown();
    }

    VelBase::ReturnPtrI<StatusSocket> socket_;
};

TEST_F(SelectResultThatFails, WhatTheStatusThrowsPassesAndEndsTheResult) {
    socket_ = SocketOfStatus(One, STATUS_DATA_PENDING);
    const Collection collection = NewCollection();
    Fill(*collection);
    const Allocations::Mark mark;
    for (int question = 0; question < 9; ++question) {
        socket_->asked = 0;
        socket_->answer = [question](int asked) {
            if (asked == question) throw std::runtime_error("gone");
            return STATUS_DATA_PENDING;
        };
        On::Select().Ready({One}, {One});
        EXPECT_THROW(collection->Select(1), std::runtime_error) << question;
        EXPECT_EQ(ReferencesOf(*socket_), 1 + 3) << question;
        EXPECT_EQ(mark.LiveBlocks(), 0) << question;
    }
}

TEST_F(SelectResultThatFails, ExhaustedMemoryEndsTheResult) {
    socket_ = SocketOfStatus(One, STATUS_DATA_PENDING);
    const Collection collection = NewCollection();
    Fill(*collection);
    const Allocations::Mark mark;
    std::size_t n = 1;
    for (bool exhausted = true; exhausted; ++n) {
        On::Select().Ready({One}, {One});
        exhausted = RunsOutOfMemory(n, [&] { Select(*collection); });
        EXPECT_EQ(ReferencesOf(*socket_), 1 + 3) << n;
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
    }
    EXPECT_GT(n, 5U);  // the result and its three entries, and a run that needs no more
}

}  // namespace
}  // namespace SocketTests

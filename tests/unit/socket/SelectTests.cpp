// SocketCollection::Select: what is waited for, for how long, and how that fails.
#include <Socket/SocketXtImpl.h>

#include <algorithm>
#include <climits>
#include <limits>
#include <sstream>

#include "CollectionFixture.h"
#include "support/ForeignSocket.h"

namespace SocketTests {
namespace {

using Handles = std::vector<Winsock::Handle>;

constexpr int UnwatchedEvents[] = {-1, 4, 5, 100, INT_MAX, INT_MIN};

// The line of a set in the transcript, null for an empty one.
std::string SetText(const Handles& handles) {
    if (handles.empty()) return "null";
    std::string text = "{";
    for (const Winsock::Handle handle : handles) {
        if (text.size() > 1) text += ", ";
        text += handle == Winsock::InvalidSocket ? "INVALID" : std::to_string(handle);
    }
    return text + '}';
}

std::string SelectLine(long long largestAndOne, const Handles& read, const Handles& write,
                       int seconds) {
    std::ostringstream line;
    line << "select(" << largestAndOne << ", " << SetText(read) << ", " << SetText(write)
         << ", null, {" << seconds << ", 0})";
    return line.str();
}

std::string SleepLine(unsigned long long milliseconds) {
    std::ostringstream line;
    line << "Sleep(" << milliseconds << ')';
    return line.str();
}

class Selecting : public SocketTest {
protected:
    // A collection of sockets of these handles, each with its event.
    static Collection CollectionOf(
        const std::vector<std::pair<Winsock::Handle, int>>& handlesAndEvents) {
        Collection collection = NewCollection();
        for (const auto& [handle, event] : handlesAndEvents)
            collection->Add(Twin(handle).Get(), event);
        return collection;
    }

    // The one line that a wait leaves in the transcript. Nothing gets ready.
    static std::string WaitOf(SocketCollection& collection, unsigned int seconds = 7) {
        ClearTranscript();
        EXPECT_EQ(collection.Select(seconds), nullptr);
        const Lines lines = Transcript();
        EXPECT_EQ(lines.size(), 1U);
        return lines.empty() ? "" : lines.front();
    }
};

TEST_F(Selecting, EmptyCollectionSleepsTheWholeTime) {
    const Collection collection = NewCollection();
    for (const unsigned int seconds : {0U, 1U, 2U, 60U, 4294967U})
        EXPECT_EQ(WaitOf(*collection, seconds), SleepLine(seconds * 1000UL));
}

TEST_F(Selecting, LongSleepIsNotCutInSeconds) {
    const Collection collection = NewCollection();
    // The largest number of milliseconds means for ever.
    constexpr unsigned long long longest = std::numeric_limits<unsigned long>::max() - 1ULL;
    EXPECT_EQ(WaitOf(*collection, 4294968), SleepLine(std::min(4294968000ULL, longest)));
}

TEST_F(Selecting, UnwatchedEventsAloneSleepTheWholeTime) {
    const Collection collection = NewCollection();
    const auto socket = MakeConnectedSocket<StatusSocket>();
    for (const int event : UnwatchedEvents)
        collection->Add(socket.Get(), event);
    EXPECT_EQ(WaitOf(*collection, 3), SleepLine(3000));
    EXPECT_EQ(socket->asked, 0);
}

TEST_F(Selecting, EachEventIsWatchedInItsSet) {
    for (const int event : {EVENT_ACCEPT, EVENT_READ, EVENT_CLOSE})
        EXPECT_EQ(WaitOf(*CollectionOf({{1001, event}})), SelectLine(1002, {1001}, {}, 7));
    EXPECT_EQ(WaitOf(*CollectionOf({{1001, EVENT_WRITE}})), SelectLine(1002, {}, {1001}, 7));
}

TEST_F(Selecting, UnwatchedEventsAreInNoSet) {
    for (const int event : UnwatchedEvents)
        EXPECT_EQ(WaitOf(*CollectionOf({{1009, event}, {1001, EVENT_READ}})),
                  SelectLine(1002, {1001}, {}, 7))
            << event;
}

TEST_F(Selecting, MixedEventsAreWatchedInListOrder) {
    EXPECT_EQ(WaitOf(*CollectionOf({{1005, EVENT_CLOSE},
                                    {1002, EVENT_WRITE},
                                    {1001, EVENT_ACCEPT},
                                    {1009, -1},
                                    {1005, EVENT_WRITE},
                                    {1003, EVENT_READ}})),
              SelectLine(1006, {1005, 1001, 1003}, {1002, 1005}, 7));
}

TEST_F(Selecting, HandleIsWatchedOncePerSet) {
    EXPECT_EQ(WaitOf(*CollectionOf({{1001, EVENT_READ},
                                    {1001, EVENT_CLOSE},
                                    {1002, EVENT_READ},
                                    {1001, EVENT_READ},
                                    {1001, EVENT_ACCEPT},
                                    {1001, EVENT_WRITE},
                                    {1002, EVENT_READ},
                                    {1001, EVENT_WRITE}})),
              SelectLine(1003, {1001, 1002}, {1001}, 7));
}

TEST_F(Selecting, LargestHandleIsTakenOverAllThatAreWatched) {
    EXPECT_EQ(WaitOf(*CollectionOf({{30, EVENT_READ}, {20, EVENT_WRITE}, {10, EVENT_CLOSE}})),
              SelectLine(31, {30, 10}, {20}, 7));
    EXPECT_EQ(WaitOf(*CollectionOf({{10, EVENT_READ}, {30, EVENT_WRITE}, {20, EVENT_CLOSE}})),
              SelectLine(31, {10, 20}, {30}, 7));
    EXPECT_EQ(WaitOf(*CollectionOf({{10, EVENT_READ}, {20, EVENT_WRITE}, {30, EVENT_ACCEPT}})),
              SelectLine(31, {10, 30}, {20}, 7));
    EXPECT_EQ(WaitOf(*CollectionOf({{0, EVENT_READ}})), SelectLine(1, {0}, {}, 7));
}

TEST_F(Selecting, TimeIsWholeSeconds) {
    const Collection collection = CollectionOf({{1001, EVENT_READ}});
    for (const int seconds : {0, 1, 2, 3600, INT_MAX})
        EXPECT_EQ(WaitOf(*collection, static_cast<unsigned int>(seconds)),
                  SelectLine(1002, {1001}, {}, seconds));
}

TEST_F(Selecting, LongerTimesThanTheSystemCountsAreTheLongestThatItDoes) {
    const Collection collection = CollectionOf({{1001, EVENT_READ}});
    for (const unsigned int seconds : {2147483648U, UINT_MAX})
        EXPECT_EQ(WaitOf(*collection, seconds), SelectLine(1002, {1001}, {}, INT_MAX));
}

class SelectingManyHandles : public Selecting, public testing::WithParamInterface<int> {
protected:
    static constexpr Winsock::Handle First = 2000;

    static Handles Numbered(Winsock::Handle count) {
        Handles handles;
        for (Winsock::Handle number = 0; number < count; ++number)
            handles.push_back(First + number);
        return handles;
    }

    static Collection CollectionOfMany(Winsock::Handle count, int event) {
        Collection collection = NewCollection();
        for (const Winsock::Handle handle : Numbered(count))
            collection->Add(Twin(handle).Get(), event);
        return collection;
    }

    static std::string Line(const Handles& watched, long long largest) {
        const bool isWrite = GetParam() == EVENT_WRITE;
        return SelectLine(largest + 1, isWrite ? Handles() : watched, isWrite ? watched : Handles(),
                          7);
    }
};

TEST_P(SelectingManyHandles, SixtyFourAreAllWatched) {
    for (const Winsock::Handle count : {Winsock::Handle{63}, Winsock::Handle{64}})
        EXPECT_EQ(WaitOf(*CollectionOfMany(count, GetParam())),
                  Line(Numbered(count), static_cast<long long>(First + count - 1)));
}

// Required: it counts among the handles whose largest is passed, and in nothing else.
TEST_P(SelectingManyHandles, SixtyFifthIsNotWatched) {
    for (const Winsock::Handle count : {Winsock::Handle{65}, Winsock::Handle{200}})
        EXPECT_EQ(WaitOf(*CollectionOfMany(count, GetParam())),
                  Line(Numbered(64), static_cast<long long>(First + count - 1)));
}

TEST_P(SelectingManyHandles, EntriesOfTheSameHandlesNeedNoRoom) {
    const Collection collection = CollectionOfMany(64, GetParam());
    for (int time = 0; time < 3; ++time)
        for (const Winsock::Handle handle : Numbered(64))
            collection->Add(Twin(handle).Get(), GetParam());
    EXPECT_EQ(WaitOf(*collection), Line(Numbered(64), First + 63));
}

TEST_P(SelectingManyHandles, DuplicatesBeforehandTakeNoRoom) {
    const Collection collection = NewCollection();
    for (int time = 0; time < 100; ++time)
        collection->Add(Twin(First).Get(), GetParam());
    for (const Winsock::Handle handle : Numbered(64))
        collection->Add(Twin(handle).Get(), GetParam());
    EXPECT_EQ(WaitOf(*collection), Line(Numbered(64), First + 63));
}

TEST_P(SelectingManyHandles, SixtyFifthIsNeverReported) {
    const Collection collection = CollectionOfMany(64, GetParam());
    const auto last = SocketOfStatus(First + 64, GetParam() + 1);  // what the event waits for
    collection->Add(last.Get(), GetParam());
    const bool isWrite = GetParam() == EVENT_WRITE;
    On::Select().Ready(isWrite ? Handles() : Numbered(64), isWrite ? Numbered(64) : Handles());
    const Collection ready(collection->Select(7));
    ASSERT_NE(ready, nullptr);
    EXPECT_EQ(ready->Find(last.Get(), GetParam()), 0xFFFFFFFFU);
    EXPECT_EQ(last->asked, 0);
}

INSTANTIATE_TEST_SUITE_P(Events, SelectingManyHandles,
                         testing::Values(EVENT_ACCEPT, EVENT_READ, EVENT_WRITE, EVENT_CLOSE));

TEST_F(Selecting, SetsAreFullEachForItself) {
    const Collection collection = NewCollection();
    Handles read;
    Handles write;
    for (Winsock::Handle number = 0; number < 70; ++number) {
        collection->Add(Twin(3000 + number).Get(), number % 2 == 0 ? EVENT_READ : EVENT_CLOSE);
        collection->Add(Twin(5000 - number).Get(), EVENT_WRITE);
        if (number >= 64) continue;
        read.push_back(3000 + number);
        write.push_back(5000 - number);
    }
    EXPECT_EQ(WaitOf(*collection), SelectLine(5001, read, write, 7));
}

TEST_F(Selecting, ClosedSocketIsTheSystemsToRefuse) {
    const auto closed = MakeClosedSocket();
    const Collection collection = NewCollection();
    collection->Add(closed.Get(), EVENT_READ);
    On::Select().Fails(10038);
    const Caught caught = Catch([&] { collection->Select(7); });
    EXPECT_EQ(
        caught,
        FailureOf("VelNet::SocketCollection::Select() - FAIL. Socket call ::select failed", 10038));
    EXPECT_EQ(Transcript().front(), SelectLine(0, {Winsock::InvalidSocket}, {}, 7));
}

TEST_F(Selecting, ClosedSocketsAreOneHandle) {
    EXPECT_EQ(WaitOf(*CollectionOf({{Winsock::InvalidSocket, EVENT_READ},
                                    {1001, EVENT_READ},
                                    {Winsock::InvalidSocket, EVENT_READ}})),
              SelectLine(0, {Winsock::InvalidSocket, 1001}, {}, 7));
}

TEST_F(Selecting, SocketOfAnotherImplementationCountsAsClosed) {
    const VelBase::ReturnPtrI<Support::ForeignSocket> foreign(new Support::ForeignSocket);
    const Collection collection = NewCollection();
    collection->Add(foreign.Get(), EVENT_READ);
    EXPECT_EQ(WaitOf(*collection), SelectLine(0, {Winsock::InvalidSocket}, {}, 7));
}

// Collections are not made for extended sockets; one that stands there does no harm.
TEST_F(Selecting, ExtendedSocketIsWatchedByItsHandle) {
    const VelBase::ReturnPtrI<SocketXtImpl> extended(
        new SocketXtImpl(1001, STATE_CLOSED, 1, 6, SocketXt::FAMILY_IPV4));
    const Collection collection = NewCollection();
    collection->Add(extended.Get(), EVENT_READ);
    EXPECT_EQ(WaitOf(*collection), SelectLine(1002, {1001}, {}, 7));
    EXPECT_EQ(collection->Find(Twin(1001).Get(), EVENT_READ), 0U);
}

TEST_F(Selecting, EachFailureIsReportedAndLeavesTheCollectionAsItWas) {
    const auto socket = MakeSocket();
    const Collection collection = NewCollection();
    collection->Add(socket.Get(), EVENT_READ);
    collection->Add(socket.Get(), EVENT_WRITE);
    ExpectEachFailure({
        .failWith = [](int number) { On::Select().Fails(number); },
        .operation = [&] { collection->Select(5); },
        .text = "VelNet::SocketCollection::Select() - FAIL. Socket call ::select failed",
        .calls = {SelectLine(1002, {1001}, {1001}, 5), "WSAGetLastError()"},
        .memory =
            [&] {
                return testing::PrintToString(EntriesOf(*collection)) +
                       std::to_string(ReferencesOf(*socket));
            },
    });
}

TEST_F(Selecting, FailureIsToldWithTheNumberAsOneUnit) {
    const Collection collection = CollectionOf({{1001, EVENT_READ}});
    On::Select().Fails(10038).Fails(65536);
    EXPECT_EQ(Catch([&] { collection->Select(0); }),
              (Caught{true,
                      u"VelNet::SocketCollection::Select() - FAIL. Socket call ::select failed, "
                      u"errno = \u2736 Socket operation on nonsocket",
                      10038}));
    EXPECT_EQ(Catch([&] { collection->Select(0); }),
              (Caught{true,
                      u"VelNet::SocketCollection::Select() - FAIL. Socket call ::select failed, "
                      u"errno = ",
                      -1}));
}

TEST_F(Selecting, TimeOverIsNoCollectionAndLeavesTheSourceAsItWas) {
    const auto socket = MakeConnectedSocket<StatusSocket>();
    const Collection collection = NewCollection();
    collection->Add(socket.Get(), EVENT_READ);
    On::Select().Returns(0).Returns(0, {1001});  // what stands in the sets does not count then
    EXPECT_EQ(collection->Select(1), nullptr);
    EXPECT_EQ(collection->Select(1), nullptr);
    EXPECT_EQ(EntriesOf(*collection), (Entries{{socket.Get(), EVENT_READ}}));
    EXPECT_EQ(ReferencesOf(*socket), 2);
    EXPECT_EQ(socket->asked, 0);
    ExpectRecords({});
}

// The sets are made afresh each time, whatever the system left in them before.
TEST_F(Selecting, EachWaitBeginsAnew) {
    const Collection collection =
        CollectionOf({{1001, EVENT_READ}, {1002, EVENT_READ}, {1003, EVENT_WRITE}});
    const std::string line = SelectLine(1004, {1001, 1002}, {1003}, 7);
    On::Select().Ready({1002});
    Collection(collection->Select(7));
    EXPECT_EQ(LastEventOf("select").text, line);
    EXPECT_EQ(WaitOf(*collection), line);
    collection->Add(Twin(1009).Get(), EVENT_WRITE);
    EXPECT_EQ(WaitOf(*collection), SelectLine(1010, {1001, 1002}, {1003, 1009}, 7));
}

TEST_F(Selecting, WaitingNeedsNoMemory) {
    const Collection collection = CollectionOf({{1001, EVENT_READ}, {1002, EVENT_WRITE}});
    const Collection empty = NewCollection();
    const Allocations::Mark mark;
    EXPECT_EQ(collection->Select(1), nullptr);
    EXPECT_EQ(empty->Select(1), nullptr);
    EXPECT_EQ(mark.Requests(), 0U);
}

TEST_F(Selecting, ExhaustedMemoryWhileAFailureIsToldLeavesNothing) {
    const Collection collection = CollectionOf({{1001, EVENT_READ}});
    const Allocations::Mark mark;
    std::size_t n = 1;
    for (bool exhausted = true; exhausted; ++n) {
        On::Select().Fails(10038);
        exhausted = RunsOutOfMemory(n, [&] { Catch([&] { collection->Select(1); }); });
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
    }
    EXPECT_GT(n, 2U);
}

}  // namespace
}  // namespace SocketTests

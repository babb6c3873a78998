// The lock around start-up and shut-down, and threads that meet there.

#include <Platform/Winsock.h>
#include <VelNet/Exception.h>

#include <atomic>
#include <functional>
#include <optional>
#include <thread>

#include "StartUpFixture.h"

namespace FoundationTests {
namespace {

class StartUpLock : public StartUpTest {
protected:
    // Somebody else holds the lock and lets go at the Sleep of that number.
    void HoldUntilSleep(int number, unsigned int afterwards = 0) {
        g_startUpLock = 0x12345678;
        Observe("Sleep", [this, number, afterwards, count = g_socketInitializationCount,
                          layer = g_socketLayer](const Event&) {
            EXPECT_EQ(g_startUpLock, 0x12345678U);
            EXPECT_EQ(g_socketInitializationCount, count) << "changed without the lock";
            EXPECT_EQ(g_socketLayer, layer) << "changed without the lock";
            if (++sleeps_ == number) g_startUpLock = afterwards;
        });
    }

private:
    int sleeps_ = 0;
};

// Before any object of any test.
const unsigned int wordAtLoad = g_startUpLock;
const int countAtLoad = g_socketInitializationCount;

Lines Sleeps(std::size_t count) {
    return Lines(count, "Sleep(0)");
}

TEST_F(StartUpLock, WordOfTheHolderIsAsRequired) {
    EXPECT_EQ(StartUpLockHeld, 0x12345678U);
    static_assert(sizeof g_startUpLock == 4);
    static_assert(std::is_same_v<decltype(g_startUpLock)::value_type, unsigned int>);
    static_assert(std::is_same_v<decltype(g_socketInitializationCount), int>);
}

TEST_F(StartUpLock, IsFreeWhenTheProgramStarts) {
    EXPECT_EQ(wordAtLoad, 0U);
    EXPECT_EQ(countAtLoad, 0);
}

TEST_F(StartUpLock, GuardHoldsItForItsScope) {
    {
        const VelNet::StartUpGuard guard;
        EXPECT_EQ(g_startUpLock, 0x12345678U);
    }
    EXPECT_EQ(g_startUpLock, 0U);
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(StartUpLock, GuardLetsGoWhenAnExceptionPasses) {
    const auto throwUnderGuard = [] {
        const VelNet::StartUpGuard guard;
        throw 4711;
    };
    EXPECT_THROW(throwUnderGuard(), int);
    EXPECT_EQ(g_startUpLock, 0U);
}

TEST_F(StartUpLock, IsHeldDuringAllThatIsDone) {
    std::vector<unsigned int> words;
    ObserveAll([&](const Event&) { words.push_back(g_startUpLock); });
    {
        const SocketInitialization initialization;
        EXPECT_EQ(g_startUpLock, 0U);
    }
    EXPECT_EQ(words, std::vector<unsigned int>(16, 0x12345678));
}

TEST_F(StartUpLock, FirstObjectWaitsForItAndGivesWay) {
    HoldUntilSleep(3);
    { const SocketInitialization initialization; }
    EXPECT_EQ(Transcript(), Sleeps(3) + StartUpLines() + ShutDownLines());
}

TEST_F(StartUpLock, WaitingHasNoBound) {
    HoldUntilSleep(5000);
    { const SocketInitialization initialization; }
    EXPECT_EQ(Transcript(), Sleeps(5000) + StartUpLines() + ShutDownLines());
}

TEST_F(StartUpLock, WaitingEndsWithAnyOtherWord) {
    HoldUntilSleep(2, 0x55);
    { const SocketInitialization initialization; }
    EXPECT_EQ(Transcript(), Sleeps(2) + StartUpLines() + ShutDownLines());
}

TEST_F(StartUpLock, FurtherObjectWaitsForIt) {
    const SocketInitialization first;
    ClearTranscript();
    HoldUntilSleep(3);
    const SocketInitialization second;
    EXPECT_EQ(Transcript(), Sleeps(3));
}

TEST_F(StartUpLock, EndOfAFurtherObjectWaitsForIt) {
    const SocketInitialization first;
    std::optional<SocketInitialization> second(std::in_place);
    ClearTranscript();
    HoldUntilSleep(3);
    second.reset();
    EXPECT_EQ(Transcript(), Sleeps(3));
}

TEST_F(StartUpLock, EndOfTheLastObjectWaitsForIt) {
    std::optional<SocketInitialization> last(std::in_place);
    ClearTranscript();
    HoldUntilSleep(3);
    last.reset();
    EXPECT_EQ(Transcript(), Sleeps(3) + ShutDownLines());
}

TEST_F(StartUpLock, AnyWordButTheHoldersIsFree) {
    for (const unsigned int word :
         {0x55U, 1U, 0x12345679U, 0x12345677U, 0x00005678U, 0x78563412U, 0xFFFFFFFFU}) {
        ClearTranscript();
        g_startUpLock = word;
        {
            const SocketInitialization initialization;
            EXPECT_EQ(g_startUpLock, 0U) << word;
            g_startUpLock = word;
        }
        EXPECT_EQ(g_startUpLock, 0U) << word;
        EXPECT_EQ(Transcript(), StartUpLines() + ShutDownLines()) << word;
    }
}

TEST_F(StartUpLock, IsFreeAfterEveryWayOut) {
    On::WSAStartup().Returns(10091);
    EXPECT_THROW(SocketInitialization(), VelNet::Exception);
    EXPECT_EQ(g_startUpLock, 0U);
    On::SynchInitializer().Throws(4711);
    EXPECT_THROW(SocketInitialization(), int);
    EXPECT_EQ(g_startUpLock, 0U);
    On::WSACleanup().Fails(10093);
    {
        const SocketInitialization first;
        const SocketInitialization second;
        EXPECT_EQ(g_startUpLock, 0U);
    }
    EXPECT_EQ(g_startUpLock, 0U);
}

// Runs the work on that many threads, all let go at once.
void RunAtOnce(int count, const std::function<void()>& work) {
    std::atomic<int> waiting = count;
    std::vector<std::thread> threads;
    for (int index = 0; index < count; ++index)
        threads.emplace_back([&] {
            --waiting;
            while (waiting != 0)
                std::this_thread::yield();
            work();
        });
    for (std::thread& thread : threads)
        thread.join();
}

class StartUpLockOnThreads : public StartUpTest {
protected:
    static constexpr int Threads = 4;
    static constexpr int Rounds = 100;

    void SetUp() override {
        StartUpTest::SetUp();
        Observe("Sleep", [](const Event&) { std::this_thread::yield(); });
    }
};

// Whether the lines are whole rounds of start-up and shut-down, one after the other.
bool AreWholeRounds(const Lines& lines) {
    const Lines round = StartUpLines() + ShutDownLines();
    if (lines.empty() || lines.size() % round.size() != 0) return false;
    for (std::size_t index = 0; index < lines.size(); ++index)
        if (lines[index] != round[index % round.size()]) return false;
    return true;
}

TEST_F(StartUpLockOnThreads, ManyObjectsKeepRoundsWholeAndBalanced) {
    std::atomic<int> down = 0;
    RunAtOnce(Threads, [&] {
        for (int round = 0; round < Rounds; ++round) {
            const SocketInitialization initialization;
            if (g_socketLayer == nullptr) ++down;
        }
    });
    EXPECT_EQ(down, 0);
    EXPECT_TRUE(AreWholeRounds(TranscriptWithout({"Sleep"})));
    EXPECT_EQ(CountOf("WSAStartup"), CountOf("WSACleanup"));
}

TEST_F(StartUpLockOnThreads, NestedObjectsKeepRoundsWholeAndBalanced) {
    RunAtOnce(Threads, [&] {
        for (int round = 0; round < Rounds / 2; ++round) {
            const SocketInitialization outer;
            const SocketInitialization inner;
        }
    });
    EXPECT_TRUE(AreWholeRounds(TranscriptWithout({"Sleep"})));
}

TEST_F(StartUpLockOnThreads, LayerStaysUpWhileOneThreadKeepsIt) {
    {
        const SocketInitialization kept;
        const SocketLayerState* const layer = g_socketLayer;
        std::atomic<int> changed = 0;
        RunAtOnce(Threads, [&] {
            for (int round = 0; round < Rounds; ++round) {
                const SocketInitialization initialization;
                if (g_socketLayer != layer) ++changed;
            }
        });
        EXPECT_EQ(changed, 0);
        EXPECT_EQ(g_socketInitializationCount, 1);
        EXPECT_EQ(TranscriptWithout({"Sleep"}), StartUpLines());
    }
    EXPECT_EQ(TranscriptWithout({"Sleep"}), StartUpLines() + ShutDownLines());
}

TEST_F(StartUpLockOnThreads, ObjectMayEndOnAnotherThread) {
    std::optional<SocketInitialization> initialization(std::in_place);
    std::thread([&] { initialization.reset(); }).join();
    EXPECT_EQ(Transcript(), StartUpLines() + ShutDownLines());
    EXPECT_NE(LastEventOf("WSACleanup").thread, LastEventOf("WSAStartup").thread);
}

TEST_F(StartUpLockOnThreads, EveryFailedStartUpIsOfItsOwn) {
    for (int count = 0; count < Threads * Rounds; ++count)
        On::WSAStartup().Returns(10091);
    std::atomic<int> thrown = 0;
    RunAtOnce(Threads, [&] {
        for (int round = 0; round < Rounds; ++round) {
            try {
                const SocketInitialization initialization;
            } catch (const VelNet::Exception&) {
                ++thrown;
            }
        }
    });
    // A thread that came between another's failure and its counting down would start nothing.
    EXPECT_EQ(thrown, Threads * Rounds);
    EXPECT_EQ(CountOf("WSAStartup"), Threads * Rounds);
    EXPECT_EQ(CountOf("WSACleanup"), 0);
}

TEST_F(StartUpLockOnThreads, FailedStartUpIsCountedDownBeforeTheLockIsFree) {
    constexpr int Failures = 3000;
    for (int count = 0; count < Failures; ++count)
        On::SynchInitializer().Throws(4711);
    std::atomic<bool> done = false;
    int leftCounted = 0;
    // Takes the lock as often and as soon as it can.
    std::thread watcher([&] {
        while (!done) {
            if (g_startUpLock.exchange(StartUpLockHeld) == StartUpLockHeld) continue;
            if (g_socketInitializationCount != 0) ++leftCounted;
            g_startUpLock.exchange(0);
        }
    });
    for (int count = 0; count < Failures; ++count)
        EXPECT_THROW(SocketInitialization(), int);
    done = true;
    watcher.join();
    EXPECT_EQ(leftCounted, 0);
}

}  // namespace
}  // namespace FoundationTests

// The log under many threads. Run under the thread sanitizer, these tests also show that nothing is
// raced for.
#include <VelLog/FileSink.h>
#include <VelLog/LogControl.h>

#include <atomic>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

#include "LogTest.h"

namespace {

using namespace std::chrono_literals;
using Support::Log;
using Support::SinkScope;
using VelBase::ReturnPtrI;
using VelLog::Router;

ReturnPtrI<Router> Create(const char* category) {
    return VelLog::CreateRouter("Network", category, VelSynch::LOCK_STACK_CATEGORY_NETWORK);
}

// Notices when it is used by two threads at once.
class CountingSink : public VelLog::LogSink {
public:
    explicit CountingSink(std::atomic<int>& written) : written_(written) {}

    void Write(const VelLog::LogRecord& record) override {
        if (++users_ != 1) overlapped_ = true;
        if (Scripted::Text(record.text) != u"record 7 of thread") garbled_ = true;
        ++written_;
        --users_;
    }

    bool IsSound() const { return !overlapped_ && !garbled_; }

private:
    std::atomic<int>& written_;
    std::atomic<int> users_ = 0;
    std::atomic<bool> overlapped_ = false;
    std::atomic<bool> garbled_ = false;
};

void LogOnce(Router& router) {
    VelLog::LogMessage(router, "record %1 of %2",
                       VelLog::GetMessageFormatter().AddInteger(7).AddNarrowText("thread"), "",
                       nullptr, nullptr, 0);
}

class LogConcurrency : public Scripted::PlatformTest {
protected:
    static constexpr int Threads = 4;
    static constexpr int Records = 2'000;

    // Runs the work on several threads while the caller does something else, until all have ended.
    template <class Work, class Meanwhile>
    static void RunBeside(Work work, Meanwhile meanwhile) {
        std::atomic<int> running = Threads;
        std::vector<std::thread> threads;
        for (int thread = 0; thread < Threads; ++thread) {
            threads.emplace_back([&] {
                work();
                --running;
            });
        }
        while (running > 0)
            meanwhile();
        for (std::thread& thread : threads)
            thread.join();
    }
};

TEST_F(LogConcurrency, EveryRecordArrivesWholeAndOneAtATime) {
    std::atomic<int> written = 0;
    CountingSink sink(written);
    const SinkScope scope(sink);
    Router router("Network", "Error");
    RunBeside(
        [&] {
            for (int record = 0; record < Records; ++record)
                LogOnce(router);
        },
        [] { std::this_thread::yield(); });
    EXPECT_EQ(written, Threads * Records);
    EXPECT_TRUE(sink.IsSound());
}

TEST_F(LogConcurrency, SinksMayEndOnceAnotherIsSet) {
    std::atomic<int> written = 0;
    Router router("Network", "Error");
    auto sink = std::make_unique<CountingSink>(written);
    VelLog::SetSink(sink.get());
    bool sound = true;
    RunBeside(
        [&] {
            for (int record = 0; record < Records; ++record)
                LogOnce(router);
        },
        [&] {
            auto next = std::make_unique<CountingSink>(written);
            EXPECT_EQ(VelLog::SetSink(next.get()), sink.get());
            sound = sound && sink->IsSound();
            sink = std::move(next);
        });
    VelLog::SetSink(nullptr);
    EXPECT_EQ(written, Threads * Records);
    EXPECT_TRUE(sound && sink->IsSound());
}

TEST_F(LogConcurrency, RoutersComeAndGoWhileTheyAreSwitched) {
    Support::RecordingSink sink;
    const SinkScope scope(sink);
    bool enabled = false;
    std::atomic<int> seen = 0;  // so that the flags are read while they change
    RunBeside(
        [&] {
            for (int round = 0; round < Records; ++round) {
                const ReturnPtrI<Router> first = Create("Error");
                const ReturnPtrI<Router> second = Create("Packet Trace");
                seen += first->IsEnabled() + second->IsEnabled();
            }
        },
        [&] {
            enabled = !enabled;
            VelLog::SetRouterEnabled("Network", "Error", enabled);
            VelLog::SetRouterEnabled("Network", "Packet Trace", enabled);
        });
    const ReturnPtrI<Router> router = Create("Error");
    EXPECT_EQ(router->IsEnabled(), enabled);
    VelLog::SetRouterEnabled("Network", "Error", false);
    VelLog::SetRouterEnabled("Network", "Packet Trace", false);
}

TEST_F(LogConcurrency, RoutersAgreeWithTheSinkWhoeverSetsIt) {
    const ReturnPtrI<Router> router = Create("Error");
    VelLog::SetRouterEnabled("Network", "Error", true);
    Support::RecordingSink sink;
    for (int round = 0; round < 50; ++round) {
        const auto setAndTake = [&] {
            VelLog::SetSink(&sink);
            VelLog::SetSink(nullptr);
        };
        RunBeside(setAndTake, setAndTake);
        EXPECT_FALSE(router->IsEnabled());
        VelLog::SetSink(&sink);
        EXPECT_TRUE(router->IsEnabled());
    }
    VelLog::SetSink(nullptr);
    VelLog::SetRouterEnabled("Network", "Error", false);
}

TEST_F(LogConcurrency, ThreadsLogWhileRoutersAndSinksAreSwitched) {
    const ReturnPtrI<Router> router = Create("Error");
    std::atomic<int> written = 0;
    CountingSink first(written), second(written);
    VelLog::SetSink(&first);
    RunBeside(
        [&] {
            for (int record = 0; record < Records;) {
                if (!router->IsEnabled()) continue;
                LogOnce(*router);
                ++record;
            }
        },
        [&] {
            VelLog::SetRouterEnabled("Network", "Error", true);
            VelLog::SetSink(&second);
            VelLog::SetRouterEnabled("Network", "Error", false);
            VelLog::SetSink(&first);
        });
    VelLog::SetSink(nullptr);
    EXPECT_EQ(written, Threads * Records);
    EXPECT_TRUE(first.IsSound() && second.IsSound());
}

// Stays in its Write until it is told to go on.
class HeldSink : public VelLog::LogSink {
public:
    void Write(const VelLog::LogRecord&) override {
        entered_.set_value();
        goOn_.get_future().wait();
        left_ = true;
    }
    void WaitUntilEntered() { entered_.get_future().wait(); }
    void GoOn() { goOn_.set_value(); }
    bool HasLeft() const { return left_; }

private:
    std::promise<void> entered_, goOn_;
    std::atomic<bool> left_ = false;
};

TEST_F(LogConcurrency, SettingASinkWaitsUntilTheEarlierOneIsUnused) {
    Router router("Network", "Error");
    HeldSink sink;
    VelLog::SetSink(&sink);
    std::thread writer([&] { Log(router, "text"); });
    sink.WaitUntilEntered();
    auto setting = std::async(std::launch::async, [&] {
        VelLog::SetSink(nullptr);
        return sink.HasLeft();
    });
    EXPECT_EQ(setting.wait_for(50ms), std::future_status::timeout);
    sink.GoOn();
    EXPECT_TRUE(setting.get());
    writer.join();
}

TEST_F(LogConcurrency, NothingIsWrittenToASinkOnceItIsReplaced) {
    Router router("Network", "Error");
    std::atomic<bool> ended = false;
    std::atomic<int> written = 0;
    CountingSink sink(written);
    std::vector<std::thread> writers;
    for (int writer = 0; writer < Threads; ++writer) {
        writers.emplace_back([&] {
            while (!ended)
                LogOnce(router);
        });
    }
    for (int round = 0; round < 50; ++round) {
        const int before = written;
        VelLog::SetSink(&sink);
        while (written == before)
            std::this_thread::yield();
        VelLog::SetSink(nullptr);
        const int after = written;
        std::this_thread::yield();
        EXPECT_EQ(written, after);
    }
    ended = true;
    for (std::thread& writer : writers)
        writer.join();
    EXPECT_TRUE(sink.IsSound());
}

// Threads that log must have left the sink before its own part is destroyed.
TEST_F(LogConcurrency, AFileSinkCanBeDestroyedWhileOthersLog) {
    EXPECT_TRUE(VelLog::SetRouterEnabled("Network", "Concurrent Ends", true));
    const ReturnPtrI<Router> router = Create("Concurrent Ends");
    RunBeside(
        [&] {
            for (int record = 0; record < Records; ++record)
                LogOnce(*router);
        },
        [] {
            VelLog::FileSink sink("log");
            VelLog::SetSink(&sink);
        });
    EXPECT_EQ(VelLog::SetSink(nullptr), nullptr);
    EXPECT_TRUE(VelLog::SetRouterEnabled("Network", "Concurrent Ends", false));
}

}  // namespace

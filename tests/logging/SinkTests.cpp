// The ring, several sinks at once, and the queue.
#include <VelLogging/QueuedSink.h>
#include <VelLogging/RingSink.h>
#include <VelLogging/TeeSink.h>
#include <gtest/gtest.h>
#include <logging/SampleRecords.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace VelLoggingTests {
namespace {

using VelLogging::Format;
using VelLogging::RingSink;
using VelLogging::Sink;

TEST(SinkRing, KeepsAllThatFits) {
    RingSink ring(1000, Format::Plain);
    EXPECT_EQ(ring.Lines(), "");
    ring.Write(SampleRecord(u"one"));
    ring.Write(SampleRecord(u"two"));
    EXPECT_EQ(ring.Lines(),
              "2026-11-22T13:01:02.123456Z Network/Packet Trace: one\n"
              "2026-11-22T13:01:02.123456Z Network/Packet Trace: two\n");
}

// A line of one character has 52 bytes.
TEST(SinkRing, ForgetsWholeLines) {
    for (const std::size_t size : {104U, 155U}) {
        RingSink ring(size, Format::Plain);
        for (const char16_t* text : {u"a", u"b", u"c", u"d"})
            ring.Write(SampleRecord(text));
        EXPECT_EQ(TextsOf(ring.Lines()), size == 104 ? "d|" : "c|d|");
    }
}

TEST(SinkRing, ALineLongerThanTheRingLeavesNoPart) {
    RingSink ring(100, Format::Plain);
    ring.Write(SampleRecord(std::u16string(300, u'x')));
    EXPECT_EQ(ring.Lines(), "");
    ring.Write(SampleRecord(u"a"));
    EXPECT_EQ(TextsOf(ring.Lines()), "a|");
}

TEST(SinkRing, ReadersSeeWholeLinesWhileAnotherThreadWrites) {
    RingSink ring(700, Format::Plain);
    std::atomic<bool> isEnding = false;
    std::thread writer([&] {
        while (!isEnding)
            ring.Write(SampleRecord(u"0123456789"));
    });
    const std::string line = "2026-11-22T13:01:02.123456Z Network/Packet Trace: 0123456789\n";
    std::string lines;
    for (int round = 0; round < 3000 && lines.empty(); ++round) {
        lines = ring.Lines();
        while (lines.compare(0, line.size(), line) == 0)
            lines.erase(0, line.size());
    }
    EXPECT_EQ(lines, "");
    isEnding = true;
    writer.join();
}

class ThrowingSink : public Sink {
public:
    void Write(const VelLog::LogRecord&) override { throw std::runtime_error("full"); }
};

class CountingSink : public Sink {
public:
    explicit CountingSink(int& reopened) : reopened_(reopened) {}
    void Write(const VelLog::LogRecord&) override { CountLost(); }
    void Reopen() noexcept override { ++reopened_; }

private:
    int& reopened_;
};

TEST(SinkTee, AFailingMemberKeepsTheOthersFromNothing) {
    int reopened = 0;
    std::vector<std::unique_ptr<Sink>> sinks;
    auto ring = std::make_unique<RingSink>(1000U);
    const RingSink* const kept = ring.get();
    sinks.push_back(std::make_unique<ThrowingSink>());
    sinks.push_back(std::make_unique<CountingSink>(reopened));
    sinks.push_back(std::move(ring));
    VelLogging::TeeSink tee(std::move(sinks));
    EXPECT_NO_THROW(tee.Write(SampleRecord(u"a")));
    EXPECT_NO_THROW(tee.Write(SampleRecord(u"b")));
    tee.Reopen();
    EXPECT_EQ(TextsOf(kept->Lines()), "a|b|");
    EXPECT_EQ(tee.Lost(), 4U);
    EXPECT_EQ(reopened, 1);
}

// Takes a record only when it is told to.
class SlowSink : public Sink {
public:
    explicit SlowSink(std::string& taken) : taken_(taken) {}

    void Write(const VelLog::LogRecord& record) override {
        std::unique_lock lock(mutex_);
        isIn_ = true;
        changed_.notify_all();
        changed_.wait(lock, [this] { return isOpen_; });
        VelLogging::AppendLine(taken_, Format::Text, record,
                               {1, VelLogging::CurrentWriter().thread});
    }

    void AwaitWrite() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return isIn_; });
    }
    void Open() {
        const std::lock_guard lock(mutex_);
        isOpen_ = true;
        changed_.notify_all();
    }

private:
    std::string& taken_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isIn_ = false;
    bool isOpen_ = false;
};

TEST(SinkQueue, ASlowSinkHoldsUpNobodyAndWhatIsTooMuchIsCounted) {
    std::string taken;
    const std::string thread = std::to_string(VelLogging::CurrentWriter().thread);
    unsigned long long lost = 0;
    {
        auto slow = std::make_unique<SlowSink>(taken);
        SlowSink& behind = *slow;
        VelLogging::QueuedSink queue(std::move(slow), 2);
        queue.Write(SampleRecord(u"a", 7));
        behind.AwaitWrite();
        for (const char16_t* text : {u"b", u"c", u"lost", u"lost"})
            queue.Write(SampleRecord(text));
        lost = queue.Lost();
        behind.Open();
    }
    EXPECT_EQ(lost, 2U);
    EXPECT_EQ(TextsOf(taken), "a|2 records were lost|b|c|");
    EXPECT_EQ(taken.substr(0, taken.find('\n')),
              "2026-11-22T13:01:02.123456Z [1:" + thread + "] #7 Network/Packet Trace: a");
}

TEST(SinkQueue, AFailingSinkIsCounted) {
    VelLogging::QueuedSink queue(std::make_unique<ThrowingSink>(), 10);
    queue.Write(SampleRecord(u"a"));
    while (queue.Lost() == 0)
        std::this_thread::yield();
    EXPECT_EQ(queue.Lost(), 1U);
}

}  // namespace
}  // namespace VelLoggingTests

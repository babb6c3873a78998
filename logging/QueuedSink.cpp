#include "VelLogging/QueuedSink.h"

#include "VelLogging/Format.h"
#include "WriterScope.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace VelLogging {

namespace {

using Units = std::vector<unsigned short>;

Units UnitsOf(const unsigned short* text) {
    const unsigned short* end = text;
    while (*end != 0)
        ++end;
    return {text, end + 1};
}

// A record that lives as long as it waits.
class KeptRecord {
public:
    explicit KeptRecord(const VelLog::LogRecord& record)
        : router_(record.router),
          category_(record.category),
          text_(UnitsOf(record.text)),
          microsecondsSince1970_(record.microsecondsSince1970),
          connection_(record.connection),
          thread_(CurrentWriter().thread) {}

    void WriteTo(Sink& sink) const {
        const WriterScope scope(thread_);
        sink.Write({router_.c_str(), category_.c_str(), text_.data(), microsecondsSince1970_,
                    connection_});
    }

    long long Time() const noexcept { return microsecondsSince1970_; }

private:
    std::string router_;
    std::string category_;
    Units text_;
    long long microsecondsSince1970_;
    unsigned long long connection_;
    unsigned long long thread_;
};

void WriteLost(Sink& sink, unsigned long long count, long long time) {
    const std::string words = std::to_string(count) + " records were lost";
    Units text(words.begin(), words.end());
    text.push_back(0);
    sink.Write({"VelLogging", "Lost", text.data(), time});
}

}  // namespace

class QueuedSink::Queue {
public:
    Queue(std::unique_ptr<Sink> behind, std::size_t capacity)
        : behind_(std::move(behind)), capacity_(capacity), thread_([this] { Run(); }) {}

    ~Queue() {
        {
            std::unique_lock lock(mutex_);
            isEnding_ = true;
            changed_.notify_all();
            changed_.wait_for(lock, LongestEnd, [this] { return records_.empty(); });
            lost_ += records_.size();
            records_.clear();
        }
        thread_.join();
    }
    Queue(const Queue&) = delete;
    Queue& operator=(const Queue&) = delete;

    void Add(const VelLog::LogRecord& record) {
        KeptRecord kept(record);
        const std::lock_guard lock(mutex_);
        if (records_.size() >= capacity_) {
            ++lost_;
            return;
        }
        records_.push_back(std::move(kept));
        changed_.notify_all();
    }

    Sink& Behind() const noexcept { return *behind_; }

    unsigned long long Lost() const noexcept {
        const std::lock_guard lock(mutex_);
        return lost_;
    }

private:
    void Run() {
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [this] { return isEnding_ || !records_.empty(); });
            if (records_.empty()) return;
            WriteFirst(lock);
        }
    }

    void WriteFirst(std::unique_lock<std::mutex>& lock) {
        const KeptRecord record = std::move(records_.front());
        records_.pop_front();
        const unsigned long long lost = lost_ - std::exchange(toldLost_, lost_);
        lock.unlock();
        const bool isWritten = TryWrite(record, lost);
        lock.lock();
        if (!isWritten) ++lost_;
        changed_.notify_all();
    }

    bool TryWrite(const KeptRecord& record, unsigned long long lost) noexcept try {
        if (lost > 0) WriteLost(*behind_, lost, record.Time());
        record.WriteTo(*behind_);
        return true;
    } catch (...) {
        return false;
    }

    const std::unique_ptr<Sink> behind_;
    const std::size_t capacity_;
    mutable std::mutex mutex_;  // guards everything below
    std::condition_variable changed_;
    std::deque<KeptRecord> records_;
    unsigned long long lost_ = 0;
    unsigned long long toldLost_ = 0;  // of these, those that a record has told of
    bool isEnding_ = false;
    std::thread thread_;  // last: it uses all others
};

QueuedSink::QueuedSink(std::unique_ptr<Sink> behind, std::size_t capacity)
    : queue_(std::make_unique<Queue>(std::move(behind), capacity)) {}

QueuedSink::~QueuedSink() = default;

void QueuedSink::Write(const VelLog::LogRecord& record) {
    queue_->Add(record);
}

void QueuedSink::Reopen() noexcept {
    queue_->Behind().Reopen();
}

unsigned long long QueuedSink::Lost() const noexcept {
    return queue_->Lost() + queue_->Behind().Lost();
}

}  // namespace VelLogging

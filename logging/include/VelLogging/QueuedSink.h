// A sink that lets nobody wait for another one.
#pragma once

#include <VelLogging/Sink.h>

#include <chrono>
#include <cstddef>
#include <memory>

namespace VelLogging {

// Copies each record into a queue, from which a thread of its own writes it to the sink behind.
// What is written while the queue is full is lost and counted; when there is room again, a record
// of the router "VelLogging", category "Lost", says how many. The thread that logs waits for
// nothing but the memory of the copy.
class QueuedSink final : public Sink {
public:
    // At most so many records wait. Throws std::system_error if there is no thread to be had,
    // std::bad_alloc.
    QueuedSink(std::unique_ptr<Sink> behind, std::size_t capacity);

    // What waits is written, but no longer than this; the rest is lost. A Write of the sink behind
    // that has begun is waited for.
    static constexpr std::chrono::seconds LongestEnd{2};
    ~QueuedSink() override;

    void Write(const VelLog::LogRecord& record) override;
    void Reopen() noexcept override;
    // Its own and those of the sink behind.
    unsigned long long Lost() const noexcept override;

private:
    class Queue;
    const std::unique_ptr<Queue> queue_;
};

}  // namespace VelLogging

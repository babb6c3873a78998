#include "CurrentSink.h"

#include "Platform/System.h"
#include "RouterSwitches.h"
#include "VelLog/LogControl.h"

#include <atomic>
#include <mutex>

namespace VelLog {

namespace {

// Held while the sink is used or replaced; the pointer may be read without it.
constinit System::Lock g_mutex;
constinit std::atomic<LogSink*> g_sink = nullptr;

// Whether this thread is inside a sink's Write and so holds the mutex.
constinit thread_local bool t_isInsideSink = false;

class InsideSink {
public:
    InsideSink() noexcept { t_isInsideSink = true; }
    ~InsideSink() { t_isInsideSink = false; }
    InsideSink(const InsideSink&) = delete;
    InsideSink& operator=(const InsideSink&) = delete;

private:
    const std::lock_guard<System::Lock> lock_{g_mutex};
};

// The caller holds the mutex.
LogSink* ExchangeSink(LogSink* sink) noexcept {
    LogSink* const earlier = g_sink.exchange(sink);
    TellRoutersOfSink(sink != nullptr);
    return earlier;
}

}  // namespace

bool IsRecordWanted() noexcept {
    return !t_isInsideSink && g_sink.load() != nullptr;
}

void WriteToSink(const LogRecord& record) {
    const InsideSink inside;
    if (LogSink* const sink = g_sink.load(); sink != nullptr) sink->Write(record);
}

LogSink* SetSink(LogSink* sink) noexcept {
    if (t_isInsideSink) return ExchangeSink(sink);
    const std::lock_guard lock(g_mutex);
    return ExchangeSink(sink);
}

void UnsetSink(const LogSink& sink) noexcept {
    // Most sinks that are destroyed have been replaced before: they need not wait for another one.
    if (g_sink.load() != &sink) return;
    if (t_isInsideSink) {
        ExchangeSink(nullptr);
        return;
    }
    const std::lock_guard lock(g_mutex);
    if (g_sink.load() == &sink) ExchangeSink(nullptr);
}

}  // namespace VelLog

// What the sinks have in common.
#pragma once

#include <VelLog/LogSink.h>

#include <atomic>

namespace VelLogging {

// Counts what a sink could not keep. No sink of this library reports a failure in another way:
// whoever writes a record learns nothing of it.
//
// Write is called for one record at a time, as VelLog does; everything else may be called from any
// thread at any time. Unset a sink before it ends if other threads may be logging then, as Logging
// (Configure.h) does.
class Sink : public VelLog::LogSink {
public:
    // How many records have not been written, or not as a whole.
    virtual unsigned long long Lost() const noexcept { return lost_.load(); }

    // For logrotate: a sink with a file closes it and opens what is at its path now. Others do
    // nothing.
    virtual void Reopen() noexcept {}

protected:
    // For a record that is lost, or a part of it.
    void CountLost() noexcept { ++lost_; }

private:
    std::atomic<unsigned long long> lost_ = 0;
};

}  // namespace VelLogging

// A sink that writes to the process's standard error.
#pragma once

#include <VelLogging/Format.h>
#include <VelLogging/Sink.h>

namespace VelLogging {

// Writes each line with one call, unbuffered. A pipe that nobody reads makes the thread wait that
// logs: put a QueuedSink before it where that matters. A pipe without a reader loses the record and
// raises no signal.
class StandardErrorSink final : public Sink {
public:
    // Opens nothing.
    explicit StandardErrorSink(Format format = Format::Plain) noexcept : format_(format) {}
    void Write(const VelLog::LogRecord& record) override;

private:
    Format format_;
    bool isCut_ = false;  // whether the last line was written only in part
};

}  // namespace VelLogging

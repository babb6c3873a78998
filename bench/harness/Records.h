// The library's packet records, switched on for a scene and off again behind it.
#pragma once

#include <VelLog/FileSink.h>
#include <VelLog/LogControl.h>
#include <VelLog/LogSink.h>

#include <string>

namespace Bench {

// Takes records and does nothing with them.
class NullSink final : public VelLog::LogSink {
public:
    void Write(const VelLog::LogRecord&) override {}
};

// A sink on a regular file of its own, which goes with it.
class TemporaryFileSink {
public:
    TemporaryFileSink();
    ~TemporaryFileSink();
    TemporaryFileSink(const TemporaryFileSink&) = delete;
    TemporaryFileSink& operator=(const TemporaryFileSink&) = delete;

    VelLog::LogSink* Sink() { return &sink_; }

private:
    std::string path_;
    VelLog::FileSink sink_;
};

// A path for a new file among the temporary ones.
std::string TemporaryPath();

// From now on the records of this category go to the sink; null for none.
void SwitchRecordsOn(const char* category, VelLog::LogSink* sink);
// Leaves no sink.
void SwitchRecordsOff(const char* category);

}  // namespace Bench

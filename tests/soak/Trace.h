// The library's log while the soak runs: switched by whoever comes by.
#pragma once

#include <VelLog/FileSink.h>
#include <VelLog/LogControl.h>

#include <filesystem>
#include <string>

#include "Connection.h"

namespace Soak {

// Sinks that live as long as a round, since their file grows.
class Trace {
public:
    explicit Trace(const std::filesystem::path& folder);
    ~Trace();
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    // Sets the sink of the file, one that drops its records, or none, and switches a router. May
    // be called from any thread. Bytes in hexadecimal never go to the file, which would grow beyond
    // all bounds.
    void Change(Random& random);

private:
    class Dropping final : public VelLog::LogSink {
    public:
        void Write(const VelLog::LogRecord&) override {}
    };

    std::filesystem::path path_;
    VelLog::FileSink file_;
    Dropping dropping_;
};

}  // namespace Soak

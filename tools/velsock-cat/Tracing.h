// The library's log, switched on as the command line asks.
#pragma once

#include <VelLog/LogSink.h>

#include <memory>

#include "Arguments.h"

namespace VelSockCat {

// Records go to the sink as long as this object lives.
class Tracing {
public:
    // Throws Failure with LocalFailure when the log file cannot be opened.
    explicit Tracing(const Arguments& arguments);
    ~Tracing();
    Tracing(const Tracing&) = delete;
    Tracing& operator=(const Tracing&) = delete;

private:
    std::unique_ptr<VelLog::LogSink> sink_;
};

}  // namespace VelSockCat

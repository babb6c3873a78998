// Switches the library's log on as the command line requests.
#pragma once

#include <VelLog/LogSink.h>

#include <memory>

#include "Arguments.h"

namespace VelSockCat {

// Records are written to the sink as long as this object lives.
class Tracing {
public:
    // Throws Failure with LocalFailure if the log file cannot be opened.
    explicit Tracing(const Arguments& arguments);
    ~Tracing();
    Tracing(const Tracing&) = delete;
    Tracing& operator=(const Tracing&) = delete;

private:
    std::unique_ptr<VelLog::LogSink> sink_;
};

}  // namespace VelSockCat

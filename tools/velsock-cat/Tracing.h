// Switches the library's log on as the command line requests.
#pragma once

#include <VelLog/LogSink.h>
#include <VelLogging/Configure.h>

#include <memory>
#include <optional>

#include "Arguments.h"

namespace VelSockCat {

// Records are written to the sink as long as this object lives.
class Tracing {
public:
    // Throws Failure: LocalFailure if the log file cannot be opened, WrongUsage if the text of
    // --log cannot be followed.
    explicit Tracing(const Arguments& arguments);
    ~Tracing();
    Tracing(const Tracing&) = delete;
    Tracing& operator=(const Tracing&) = delete;

private:
    void SwitchOn(const Arguments& arguments);

    std::unique_ptr<VelLog::LogSink> sink_;
    std::optional<VelLogging::Logging> logging_;
};

}  // namespace VelSockCat

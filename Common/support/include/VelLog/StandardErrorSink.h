// A sink that writes to the process's standard error.
#pragma once

#include "VelLog/LogSink.h"

namespace VelLog {

// Writes each record as one line of UTF-8: time (UTC), router, category, text.
class VELSOCK_EXPORT StandardErrorSink : public LogSink {
public:
    StandardErrorSink() noexcept;
    // Unsets the sink if it is set, and waits for threads that are in its Write.
    ~StandardErrorSink() override;
    // Writes the record as it comes: nothing is buffered.
    void Write(const LogRecord& record) override;

private:
    bool isCut_ = false;  // whether what this wrote last ends within a line
};

}  // namespace VelLog

// A sink that appends to a file.
#pragma once

#include "VelLog/LogSink.h"

namespace VelLog {

// Writes each record as one line of UTF-8 to the end of a file: time (UTC), router, category, text.
// The file is made, if need be, readable and writable by its owner only. On Linux a link in its
// place is followed where only the process's user and root can have made it; any other is refused.
// A record that the file takes in part, because the disk is full for one, stays a line of its own.
class VELSOCK_EXPORT FileSink : public LogSink {
public:
    // The path is UTF-8. Throws VelBase::ExceptionImpl<VelBase::Message> with the path and the
    // system's reason when the file cannot be opened for appending (a null path cannot), and
    // std::bad_alloc. May be made on any thread; the destructor closes the file and must not run
    // while the sink is set.
    explicit FileSink(const char* path);
    ~FileSink() override;
    void Write(const LogRecord& record) override;

private:
    long long file_;  // as the system numbers it
    bool isCut_;      // whether it ends within a line
};

}  // namespace VelLog

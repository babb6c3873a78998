// A sink that appends to a file.
#pragma once

#include "VelBase/ExceptionImpl.h"
#include "VelLog/LogSink.h"

namespace VelLog {

// Appends each record to a file as one line of UTF-8: time (UTC), router, category, text. If a
// record is written only in part, because the disk is full for instance, the next one nevertheless
// begins a new line.
//
// A file that does not exist is created with access for its owner only. On Linux a symbolic link is
// followed only if nobody but the process's user and root can have created it, and refused
// otherwise.
class VELSOCK_EXPORT FileSink : public LogSink {
public:
    // Opens the file; the path is UTF-8. May be called on any thread.
    //
    // Throws: VelBase::ExceptionImpl<VelBase::Message>
    //                         the file cannot be opened for appending, or the path is null; the
    //                         message has the path and the system's reason
    //         std::bad_alloc
    explicit FileSink(const char* path);

    // Unsets the sink if it is set, waits for threads that are in its Write, and closes the file.
    ~FileSink() override;

    // Appends the record to the file.
    void Write(const LogRecord& record) override;

private:
    long long file_;  // as the system numbers it
    bool isCut_;      // whether the file ends within a line
};

}  // namespace VelLog

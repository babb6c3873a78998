// A sink that appends to a file.
#pragma once

#include <VelLog/LogSink.h>

namespace VelLog {

// Writes each record as one line of UTF-8 to the end of a file: time (UTC), router, category, text.
// The file is made, if need be, readable and writable by its owner only.
class VELSOCK_EXPORT FileSink : public LogSink {
public:
    // The path is UTF-8. Throws VelBase::ExceptionImpl<VelBase::Message> with the path and the
    // system's reason when the file cannot be opened for appending.
    explicit FileSink(const char* path);
    ~FileSink() override;
    void Write(const LogRecord& record) override;

private:
    long long file_;
};

}  // namespace VelLog

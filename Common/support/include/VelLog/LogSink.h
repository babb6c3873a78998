// Where records go.
#pragma once

#include "VelBase/Export.h"

namespace VelLog {

// One record. The texts are borrowed for the duration of the call that hands it over.
struct LogRecord {
    const char* router;    // "Network"
    const char* category;  // "Error", "Connection Trace", "Packet Trace", "Verbose Packet Trace"
    const unsigned short* text;       // UTF-16, one line: control characters have been made visible
    long long microsecondsSince1970;  // UTC
};

// Takes records. The host makes the sink and keeps it alive as long as it is set. Records arrive
// one at a time, from whichever thread wrote them, on that thread. A sink that waits keeps every
// thread waiting that has a record; it must not wait for one of them. A sink may use the library,
// except that it neither makes nor ends a SocketInitialization; what it logs itself while it
// handles a record is dropped. A sink that throws loses its record, nothing else.
class VELSOCK_EXPORT LogSink {
public:
    LogSink() = default;
    LogSink(const LogSink&) = delete;
    LogSink& operator=(const LogSink&) = delete;
    virtual ~LogSink();

    virtual void Write(const LogRecord& record) = 0;
};

}  // namespace VelLog

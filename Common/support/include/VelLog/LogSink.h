// The destination of log records.
#pragma once

#include "VelBase/Export.h"

namespace VelLog {

// One record. The strings are valid only during the call that passes it.
struct LogRecord {
    const char* router;    // "Network"
    const char* category;  // "Error", "Connection Trace", "Packet Trace", "Verbose Packet Trace"
    const unsigned short* text;       // UTF-16, one line: control characters have been made visible
    long long microsecondsSince1970;  // UTC
    // Tells the records of one socket from those of all others whose text is the same; 0 for a
    // record of none. A socket gets the next number when it writes its first record. An accepted
    // connection's records, the first included, have the number of the socket that was accepted.
    // After 4,294,967,295 sockets the numbers begin again.
    unsigned long long connection = 0;
};

// Receives records. The host process creates the sink. One that is set (SetSink) when it is
// destroyed unsets itself; if other threads may be logging then, unset it before: the class's own
// part is gone by the time that the base class's destructor waits for them.
//
// Write is called for one record at a time, on the thread that logs it. A sink that blocks
// therefore blocks every thread that logs, and must not wait for one of them.
//
// A sink may use the library, except that it must not create or destroy a SocketInitialization.
// What it logs itself during Write is dropped. If Write throws, that record is lost, and nothing
// else happens.
class VELSOCK_EXPORT LogSink {
public:
    LogSink() = default;
    LogSink(const LogSink&) = delete;
    LogSink& operator=(const LogSink&) = delete;
    virtual ~LogSink();

    // Takes one record.
    virtual void Write(const LogRecord& record) = 0;
};

}  // namespace VelLog

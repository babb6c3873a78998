// How a record is written as one line.
#pragma once

#include <VelLog/LogSink.h>

#include <string>

namespace VelLogging {

// Each line is UTF-8 and ends with a line feed; the time is UTC in microseconds. Nothing in a
// record can end its line or begin another: controls are escaped, and broken UTF-16 becomes U+FFFD.
enum class Format {
    // 2026-11-22T13:01:02.123456Z Network/Packet Trace: TEXT, as VelLog::FileSink writes it
    Plain,
    // 2026-11-22T13:01:02.123456Z [PROCESS:THREAD] #CONNECTION Network/Packet Trace: TEXT
    // without #CONNECTION if the record has none
    Text,
    // time=... pid=... tid=... connection=... router=Network category="Packet Trace" text="TEXT"
    Logfmt,
    // {"time":"...","pid":...,"tid":...,"connection":...,"router":"...","category":"...","text":"..."}
    Json,
};

// Who has written a record.
struct Writer {
    // As the system numbers it.
    unsigned long long process;
    // As the system numbers it.
    unsigned long long thread;
};

// The calling thread; while a queue hands a record on, the thread that has written that.
Writer CurrentWriter() noexcept;

// Appends the record to the text as a line. Throws std::bad_alloc.
void AppendLine(std::string& text, Format format, const VelLog::LogRecord& record, Writer writer);

}  // namespace VelLogging

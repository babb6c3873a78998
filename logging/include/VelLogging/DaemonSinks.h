// Sinks that pass records to the system's own log.
#pragma once

#include <VelLogging/Format.h>
#include <VelLogging/Sink.h>

#include <cstddef>
#include <string>

namespace VelLogging {

// The daemons' sinks speak to their local sockets directly: the program gets no further library.
// They never wait: a record that the daemon does not take at once, because it is down or does not
// keep up, is lost and counted, and the next one reaches it as soon as it is there again. Records
// of failures have the severity "error", of connections "informational", and all others "debug".
struct DaemonOptions {
    // Under which name the daemon shows the records; that of the program if it is empty.
    std::string tag;
    // The daemon's socket; the usual one if it is empty.
    std::string path;
};

// Whether this system can have the daemon at all; none of them is known on Windows.
bool HasDaemons() noexcept;

// Sends to a daemon of the system log in the form that its local socket takes (RFC 3164):
// <PRIORITY>Nov 22 13:01:02 TAG[PROCESS]: and the line, without its line feed. What is longer than
// LongestLine is cut between two characters.
class SyslogSink final : public Sink {
public:
    // In bytes.
    static constexpr std::size_t LongestLine = 8000;
    // Numbers of facilities.
    static constexpr int FacilityUser = 1;
    static constexpr int FacilityDaemon = 3;
    static constexpr int FacilityLocal0 = 16;

    // Opens nothing but a socket. Throws std::runtime_error if there is none to be had or the
    // system has no such daemon, std::bad_alloc.
    explicit SyslogSink(DaemonOptions options = {}, Format format = Format::Text,
                        int facility = FacilityUser);
    ~SyslogSink() override;
    void Write(const VelLog::LogRecord& record) override;

private:
    const DaemonOptions options_;
    const Format format_;
    const int facility_;
    const long long socket_;
};

// Sends to the journal in its own protocol, each part of a record as a field: MESSAGE, PRIORITY,
// SYSLOG_IDENTIFIER, TID, VELSOCK_ROUTER, VELSOCK_CATEGORY, VELSOCK_TIME, and VELSOCK_CONNECTION if
// the record has one. What does not fit into a datagram goes as a file in memory.
class JournalSink final : public Sink {
public:
    // As SyslogSink.
    explicit JournalSink(DaemonOptions options = {});
    ~JournalSink() override;
    void Write(const VelLog::LogRecord& record) override;

private:
    const DaemonOptions options_;
    const long long socket_;
};

// Passes each line to the debugger that is attached to the process, if one is. Only on Windows;
// elsewhere the constructor throws std::runtime_error.
class DebuggerSink final : public Sink {
public:
    // Throws std::runtime_error where there is no debugger to be written to.
    explicit DebuggerSink(Format format = Format::Plain);
    void Write(const VelLog::LogRecord& record) override;

private:
    const Format format_;
};

}  // namespace VelLogging

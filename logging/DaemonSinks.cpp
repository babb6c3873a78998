#include "VelLogging/DaemonSinks.h"

#include "Appending.h"
#include "System.h"
#include "Time.h"
#include "Utf8.h"

#include <stdexcept>
#include <string_view>
#include <utility>

namespace VelLogging {

namespace {

constexpr int SeverityError = 3;
constexpr int SeverityInformational = 6;
constexpr int SeverityDebug = 7;

int SeverityOf(std::string_view category) noexcept {
    if (category == "Error") return SeverityError;
    return category == "Connection Trace" ? SeverityInformational : SeverityDebug;
}

DaemonOptions WithDefaults(DaemonOptions options, const char* usualPath) {
    if (options.tag.empty()) options.tag = System::ProgramName();
    if (options.path.empty()) options.path = usualPath;
    return options;
}

System::File OpenOrThrow(const char* daemon) {
    const System::File socket = System::OpenDatagramSocket();
    if (socket != System::NoFile) return socket;
    throw std::runtime_error(System::HasDaemons() ? std::string("no socket for the ") + daemon
                                                  : std::string("this system has no ") + daemon);
}

// A value with a line feed is preceded by its length, as eight bytes, the lowest first.
void AppendField(std::string& fields, std::string_view name, std::string_view value) {
    fields += name;
    if (value.find('\n') == std::string_view::npos) {
        fields += '=';
    } else {
        fields += '\n';
        for (unsigned long long length = value.size(), byte = 0; byte < 8; ++byte, length >>= 8)
            fields += static_cast<char>(length & 0xFF);
    }
    fields += value;
    fields += '\n';
}

std::string FieldsOf(const VelLog::LogRecord& record, const std::string& tag) {
    std::string fields;
    AppendField(fields, "MESSAGE", Utf8Of(record.text));
    AppendField(fields, "PRIORITY", std::to_string(SeverityOf(record.category)));
    AppendField(fields, "SYSLOG_IDENTIFIER", tag);
    AppendField(fields, "TID", std::to_string(CurrentWriter().thread));
    AppendField(fields, "VELSOCK_ROUTER", record.router);
    AppendField(fields, "VELSOCK_CATEGORY", record.category);
    AppendField(fields, "VELSOCK_TIME", TimeText(record.microsecondsSince1970));
    if (record.connection != 0)
        AppendField(fields, "VELSOCK_CONNECTION", std::to_string(record.connection));
    return fields;
}

}  // namespace

bool HasDaemons() noexcept {
    return System::HasDaemons();
}

SyslogSink::SyslogSink(DaemonOptions options, Format format, int facility)
    : options_(WithDefaults(std::move(options), System::UsualSyslogPath())),
      format_(format),
      facility_(facility),
      socket_(OpenOrThrow("system log")) {}

SyslogSink::~SyslogSink() {
    System::Close(socket_);
}

void SyslogSink::Write(const VelLog::LogRecord& record) {
    const int priority = facility_ * 8 + SeverityOf(record.category);
    std::string line = LineOf(record, format_);
    line.pop_back();
    line.resize(LengthUpTo(line, LongestLine));
    const std::string datagram = '<' + std::to_string(priority) + '>' +
                                 System::SyslogTime(record.microsecondsSince1970 / 1'000'000) +
                                 ' ' + options_.tag + '[' +
                                 std::to_string(CurrentWriter().process) + "]: " + line;
    if (!System::SendDatagram(socket_, options_.path, datagram)) CountLost();
}

JournalSink::JournalSink(DaemonOptions options)
    : options_(WithDefaults(std::move(options), System::UsualJournalPath())),
      socket_(OpenOrThrow("journal")) {}

JournalSink::~JournalSink() {
    System::Close(socket_);
}

void JournalSink::Write(const VelLog::LogRecord& record) {
    if (!System::SendToJournal(socket_, options_.path, FieldsOf(record, options_.tag))) CountLost();
}

DebuggerSink::DebuggerSink(Format format) : format_(format) {
    if (!System::HasDebugger()) throw std::runtime_error("only Windows has a debugger's log");
}

void DebuggerSink::Write(const VelLog::LogRecord& record) {
    System::WriteToDebugger(LineOf(record, format_));
}

}  // namespace VelLogging

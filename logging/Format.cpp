#include "VelLogging/Format.h"

#include "System.h"
#include "Time.h"
#include "Utf8.h"
#include "WriterScope.h"

#include <algorithm>
#include <string_view>

namespace VelLogging {

namespace {

// The thread that has written what a queue hands on; 0 outside of a queue.
constinit thread_local unsigned long long t_writingThread = 0;

void AppendHead(std::string& text, const VelLog::LogRecord& record) {
    AppendVisible(text, record.router);
    text += '/';
    AppendVisible(text, record.category);
    text += ": ";
    AppendVisible(text, Utf8Of(record.text));
}

void AppendPlain(std::string& text, const VelLog::LogRecord& record) {
    text += TimeText(record.microsecondsSince1970);
    text += ' ';
    AppendHead(text, record);
}

void AppendText(std::string& text, const VelLog::LogRecord& record, Writer writer) {
    text += TimeText(record.microsecondsSince1970);
    text += " [" + std::to_string(writer.process) + ':' + std::to_string(writer.thread) + "] ";
    if (record.connection != 0) text += '#' + std::to_string(record.connection) + ' ';
    AppendHead(text, record);
}

void AppendQuoted(std::string& text, std::string_view value) {
    text += '"';
    AppendEscaped(text, value);
    text += '"';
}

bool NeedsQuotes(std::string_view value) noexcept {
    return value.empty() || std::any_of(value.begin(), value.end(), [](unsigned char byte) {
               return byte <= ' ' || byte >= 0x7F || byte == '"' || byte == '=' || byte == '\\';
           });
}

void AppendWord(std::string& text, std::string_view value) {
    if (NeedsQuotes(value)) return AppendQuoted(text, value);
    text += value;
}

void AppendLogfmt(std::string& text, const VelLog::LogRecord& record, Writer writer) {
    text += "time=" + TimeText(record.microsecondsSince1970);
    text += " pid=" + std::to_string(writer.process) + " tid=" + std::to_string(writer.thread);
    if (record.connection != 0) text += " connection=" + std::to_string(record.connection);
    text += " router=";
    AppendWord(text, record.router);
    text += " category=";
    AppendWord(text, record.category);
    text += " text=";
    AppendQuoted(text, Utf8Of(record.text));
}

void AppendJson(std::string& text, const VelLog::LogRecord& record, Writer writer) {
    text += R"({"time":")" + TimeText(record.microsecondsSince1970);
    text += R"(","pid":)" + std::to_string(writer.process);
    text += ",\"tid\":" + std::to_string(writer.thread);
    if (record.connection != 0) text += ",\"connection\":" + std::to_string(record.connection);
    text += ",\"router\":";
    AppendQuoted(text, record.router);
    text += ",\"category\":";
    AppendQuoted(text, record.category);
    text += ",\"text\":";
    AppendQuoted(text, Utf8Of(record.text));
    text += '}';
}

}  // namespace

WriterScope::WriterScope(unsigned long long thread) noexcept {
    t_writingThread = thread;
}

WriterScope::~WriterScope() {
    t_writingThread = 0;
}

Writer CurrentWriter() noexcept {
    return {System::ProcessNumber(),
            t_writingThread != 0 ? t_writingThread : System::ThreadNumber()};
}

void AppendLine(std::string& text, Format format, const VelLog::LogRecord& record, Writer writer) {
    switch (format) {
        case Format::Plain:
            AppendPlain(text, record);
            break;
        case Format::Text:
            AppendText(text, record, writer);
            break;
        case Format::Logfmt:
            AppendLogfmt(text, record, writer);
            break;
        case Format::Json:
            AppendJson(text, record, writer);
            break;
    }
    text += '\n';
}

}  // namespace VelLogging

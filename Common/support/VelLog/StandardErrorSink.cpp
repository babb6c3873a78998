#include "VelLog/StandardErrorSink.h"

#include "LogLine.h"

namespace VelLog {

StandardErrorSink::StandardErrorSink() noexcept = default;
StandardErrorSink::~StandardErrorSink() = default;

void StandardErrorSink::Write(const LogRecord& record) {
    WriteLogLine(System::StandardError(), record, isCut_);
}

}  // namespace VelLog

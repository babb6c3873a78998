#include "VelLog/StandardErrorSink.h"

#include "CurrentSink.h"
#include "LogLine.h"

namespace VelLog {

StandardErrorSink::StandardErrorSink() noexcept = default;

StandardErrorSink::~StandardErrorSink() {
    UnsetSink(*this);
}

void StandardErrorSink::Write(const LogRecord& record) {
    WriteLogLine(System::StandardError(), record, isCut_);
}

}  // namespace VelLog

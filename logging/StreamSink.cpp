#include "VelLogging/StreamSink.h"

#include "Appending.h"

namespace VelLogging {

void StandardErrorSink::Write(const VelLog::LogRecord& record) {
    const std::string line = LineOf(record, format_, isCut_);
    if (!Append(System::StandardError(), line, isCut_).isWhole) CountLost();
}

}  // namespace VelLogging

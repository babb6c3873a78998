#include "VelLog/LogSink.h"

namespace VelLog {

LogSink::~LogSink() = default;

}  // namespace VelLog

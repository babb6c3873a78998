#include "VelLog/LogSink.h"

#include "CurrentSink.h"

namespace VelLog {

LogSink::~LogSink() {
    UnsetSink(*this);
}

}  // namespace VelLog

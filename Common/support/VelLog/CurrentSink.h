// The sink that the host has set.
#pragma once

#include "VelLog/LogSink.h"

namespace VelLog {

// Whether a record of the calling thread would be written: a sink is set, and the thread is not
// inside it.
bool IsRecordWanted() noexcept;

// Passes the record to the sink, if one is still set, and lets through what it throws. Call only if
// IsRecordWanted.
void WriteToSink(const LogRecord& record);

}  // namespace VelLog

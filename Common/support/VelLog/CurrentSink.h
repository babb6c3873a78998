// The sink that the host has set.
#pragma once

#include "VelLog/LogSink.h"

namespace VelLog {

// Whether a record of the calling thread would go anywhere: a sink is set, and the thread is not
// inside it.
bool IsRecordWanted() noexcept;

// Hands the record to the sink, if one is still set. What the sink throws passes on. Only where
// IsRecordWanted.
void WriteToSink(const LogRecord& record);

}  // namespace VelLog

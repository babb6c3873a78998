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

// Unsets the sink, if it is the one that is set, as SetSink does: no other thread uses it any more
// when this returns.
void UnsetSink(const LogSink& sink) noexcept;

}  // namespace VelLog

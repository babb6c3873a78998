// How the ready-made sinks write a record.
#pragma once

#include "Platform/System.h"
#include "VelLog/LogSink.h"

namespace VelLog {

// Writes the record as one line of UTF-8, in one piece: "<time, UTC> <router>/<category>: <text>".
// A line that cannot be written is lost. One that the file took in part stays so, and the next one
// begins with a line feed: isCut says whether the file ends within a line, and is kept true.
void WriteLogLine(System::LogFile file, const LogRecord& record, bool& isCut);

}  // namespace VelLog

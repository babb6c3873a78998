// Writes a record for the ready-made sinks.
#pragma once

#include "Platform/System.h"
#include "VelLog/LogSink.h"

namespace VelLog {

// Writes the record as one line of UTF-8 with one call: "<time, UTC> <router>/<category>: <text>".
//
// A line that cannot be written is lost. If the file takes only a part, that part stays, and the
// next line begins with a line feed: isCut holds whether the file ends within a line, and is
// updated.
void WriteLogLine(System::LogFile file, const LogRecord& record, bool& isCut);

}  // namespace VelLog

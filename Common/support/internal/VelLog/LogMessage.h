// Writes one record.
#pragma once

#include "VelLog/Router.h"
#include "VelResource/MessageFormatter.h"

namespace VelLog {

// Returns the process-wide formatter, with the calling thread's arguments cleared.
VelResource::MessageFormatter& GetMessageFormatter() noexcept;

// Inserts the formatter's arguments into the format and passes the record to the host's sink, if
// one is set. Control characters in the record are made visible. Does not throw, and keeps the
// error numbers that the caller may still read.
//
// The format in double quotes, the two null strings and the number are the logging library's own
// bookkeeping; they do not appear in the record.
void LogMessage(Router& router, const char* format, VelResource::MessageFormatter& formatter,
                const char* quotedFormat, const char* source, const char* function, int line);

}  // namespace VelLog

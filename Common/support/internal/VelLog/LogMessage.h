// Writes one record.
#pragma once

#include "VelLog/Router.h"
#include "VelResource/MessageFormatter.h"

namespace VelLog {

// The process-wide formatter. Asking for it forgets the arguments that the calling thread has fed.
VelResource::MessageFormatter& GetMessageFormatter() noexcept;

// Puts the formatter's arguments into the format and hands the record to the host's sink, if there
// is one. Control characters of the record are made visible. Nothing that goes wrong here reaches
// the caller, and the error numbers that it may still want to read are kept. The format in double
// quotes, the two null texts and the number are the logging library's own bookkeeping and leave no
// trace in the record.
void LogMessage(Router& router, const char* format, VelResource::MessageFormatter& formatter,
                const char* quotedFormat, const char* source, const char* function, int line);

}  // namespace VelLog

// The host's hold on the library's log: which routers write, and where to.
#pragma once

#include "VelBase/Export.h"
#include "VelLog/LogSink.h"

namespace VelLog {

// All routers are off and no sink is set until the host says so here. Both operations may be called
// from any thread at any time, before the socket layer is started, while it is up and after it has
// stopped.

// Switches the router of this name and category, and every later one of the same name and category,
// on or off. The library's routers are all named "Network"; their categories are "Error",
// "Connection Trace", "Packet Trace" and "Verbose Packet Trace". Any other pair is remembered too,
// for a router that may come. Returns false, and changes nothing, for a null text, one of more than
// 63 characters, and a new pair when 64 are remembered already.
VELSOCK_EXPORT bool SetRouterEnabled(const char* router, const char* category,
                                     bool enabled) noexcept;

// Sends all records to the sink from now on, or nowhere when it is null, and returns the one that
// was set before. When this returns, the earlier sink is no longer in use by any thread, except by
// the calling one when that is inside the sink's Write.
VELSOCK_EXPORT LogSink* SetSink(LogSink* sink) noexcept;

}  // namespace VelLog

// Control of the library's log: which routers write, and to which sink.
#pragma once

#include "VelBase/Export.h"
#include "VelLog/LogSink.h"

namespace VelLog {

// A router passes the records of one category on to the sink while it is switched on. Initially all
// routers are off and no sink is set. Both operations may be called from any thread at any time:
// before the socket layer is started, while it is up and after it has been stopped.

// The name of the library's routers and their categories. A misspelt one is another router, which
// nobody writes to.
inline constexpr char ROUTER_NETWORK[] = "Network";
inline constexpr char CATEGORY_ERROR[] = "Error";
inline constexpr char CATEGORY_CONNECTION_TRACE[] = "Connection Trace";
inline constexpr char CATEGORY_PACKET_TRACE[] = "Packet Trace";
inline constexpr char CATEGORY_VERBOSE_PACKET_TRACE[] = "Verbose Packet Trace";

// Switches the router with this name and category on or off, even if it is created only later.
// Pairs that are not the library's are remembered too, up to 64.
//
// Returns false and changes nothing if a string is null or longer than 63 characters, or if a new
// pair would be the 65th.
VELSOCK_EXPORT bool SetRouterEnabled(const char* router, const char* category,
                                     bool enabled) noexcept;

// Directs all records to the sink from now on, or discards them if it is null, and returns the sink
// that was set before. When this returns, no thread uses that earlier sink any more, except the
// calling thread if it is inside the sink's Write.
VELSOCK_EXPORT LogSink* SetSink(LogSink* sink) noexcept;

}  // namespace VelLog

// The scripted platform in the place of the system's own functions.
//
// What the module asks of ws2_32, kernel32 and advapi32 becomes a line of the scripted platform's
// transcript, and its queues answer. The sockets' functions are the seam's, argument by argument;
// the others are translated, and check themselves what the seam does not know.
#pragma once

#include <vector>

#include "ImportTable.h"

namespace Module {

// All of ws2_32 that the module imports.
std::vector<StandIn> SocketStandIns();

// Sleep, GetComputerNameW, GetVersionExW and FormatMessageW.
std::vector<StandIn> SystemStandIns();

// The language library's operator new, which serves the module and spoils the thread's last error,
// as the system may when it is asked for memory.
std::vector<StandIn> MemoryStandIns();

// Reading keys and values. A key is to be opened for nothing but reading.
std::vector<StandIn> RegistryStandIns();

}  // namespace Module

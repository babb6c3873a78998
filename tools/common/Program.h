// What every tool's main function does.
#pragma once

#include <string>
#include <vector>

#include "Failure.h"

namespace VelSockTools {

// The work of a tool, on the words of the command line without the program's name; what the process
// is to end with. Throws Failure, and what the library throws.
using Work = ExitCode (*)(const std::vector<std::string>& words);

// Makes the standard streams ready, does the work, and tells its failure in one line. Returns what
// the process is to end with.
int RunProgram(const char* program, Work work, int count, char** words);

}  // namespace VelSockTools

// The main function of every tool.
#pragma once

#include <string>
#include <vector>

#include "Failure.h"

namespace VelSockTools {

// Does the tool's work with the command line, which lacks the program's name, and returns the exit
// code. Throws Failure, and what the library throws.
using Work = ExitCode (*)(const std::vector<std::string>& words);

// Prepares the standard streams, does the work, and reports a failure in one line. Returns the exit
// code.
int RunProgram(const char* program, Work work, int count, char** words);

}  // namespace VelSockTools

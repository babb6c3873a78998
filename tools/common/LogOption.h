// The option --log: what is logged, and where.
#pragma once

#include <VelLogging/Configure.h>

#include <string>

namespace VelSockTools {

// Sets up logging as the text says: see VelLogging::Configure.
//
// Throws Failure: WrongUsage if the text cannot be followed, LocalFailure if a sink cannot be made.
VelLogging::Logging StartLogging(const char* program, const std::string& text);

}  // namespace VelSockTools

// Writes conversations as a capture for network analysers.
#pragma once

#include "Arguments.h"

namespace VelSockTrace {

// The packets are made up, with the real bytes and times. Throws Failure with LocalFailure, or with
// NothingFound if there is no such conversation.
void WriteCapture(const Arguments& arguments);

}  // namespace VelSockTrace

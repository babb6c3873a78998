// Writes conversations as a page to look at.
#pragma once

#include "Arguments.h"

namespace VelSockTrace {

// One file, which needs no other. Throws Failure with LocalFailure, or with NothingFound if there
// is no such conversation.
void WritePage(const Arguments& arguments);

}  // namespace VelSockTrace

// Shows the transfers of one conversation.
#pragma once

#include "Arguments.h"

namespace VelSockTrace {

// Throws Failure with LocalFailure, or with NothingFound if there is no such conversation.
void Show(const Arguments& arguments);

}  // namespace VelSockTrace

// Lists conversations.
#pragma once

#include "Arguments.h"
#include "Failure.h"

namespace VelSockTrace {

// Prints each conversation that is wanted when it is forgotten, so in the order of their ends.
// Throws Failure with LocalFailure, or with NothingFound if there is none.
void List(const Arguments& arguments);

}  // namespace VelSockTrace

// Examines this computer: what the library finds here, what would fail, and how to mend it.
#pragma once

#include "Failure.h"

namespace VelSockResolve {

// Prints a line, or a JSON object, for each thing that was looked at. For a moment it creates
// sockets and joins groups, but sends nothing itself. Returns NotConfigured if something would
// fail. The socket layer must be up. Throws Failure with LocalFailure.
VelSockTools::ExitCode Examine(bool inJson);

}  // namespace VelSockResolve

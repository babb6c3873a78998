// The name servers of the system's resolver.
#pragma once

namespace Posix {

// Whether a name server, asked about the name, tells that it fails, or has it after all. Silence is
// neither, nor is a refusal. Waits a second for each server that is silent.
bool DoesNameServerFail(const char* name);

}  // namespace Posix

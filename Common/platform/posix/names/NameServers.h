// The name servers of the system's resolver.
#pragma once

namespace Posix {

// Whether a name server that is asked about the name reports a failure (SERVFAIL), or knows the
// name after all; also true if the servers cannot be asked for lack of resources. Silence and
// refusal are neither. Waits one second for each silent server.
bool DoesNameServerFail(const char* name);

}  // namespace Posix

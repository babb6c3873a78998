// Links that stand in the place of a file.
#pragma once

#include <sys/types.h>

namespace Posix {

// Opens the file at the path as the system's open does, for the running user. A link in its place
// is followed where nobody but that user and root can have made it: it is theirs, or it stands in a
// folder of theirs that nobody else may write. Any other fails with EACCES. Allocates nothing.
int OpenThroughTrustedLinks(const char* path, int flags, mode_t mode) noexcept;

}  // namespace Posix

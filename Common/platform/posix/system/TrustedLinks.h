// Opens files without following links that other users may have planted.
#pragma once

#include <sys/types.h>

namespace Posix {

// Opens the file like the system's open, for the effective user. A symbolic link as the last
// component is followed only if nobody but that user and root can have created it: it belongs to
// one of them, or the folder does and nobody else may write there. Any other link fails with
// EACCES. Does not allocate.
int OpenThroughTrustedLinks(const char* path, int flags, mode_t mode) noexcept;

}  // namespace Posix

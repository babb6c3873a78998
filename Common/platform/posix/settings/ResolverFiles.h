// The files with the system resolver's settings.
#pragma once

namespace Posix {

const char* ResolverFile() noexcept;

// The file with the servers that the local stub resolver (systemd-resolved) itself forwards to.
const char* LocalServersResolverFile() noexcept;

}  // namespace Posix

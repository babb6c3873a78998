// The files with the system resolver's settings.
#pragma once

namespace Posix {

const char* ResolverFile() noexcept;

// The settings that the local name server, if the host runs one, uses itself.
const char* LocalServersResolverFile() noexcept;

}  // namespace Posix

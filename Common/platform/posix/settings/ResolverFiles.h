// Where the system's resolver has its settings.
#pragma once

namespace Posix {

const char* ResolverFile() noexcept;

// The settings that the local name server, if the machine runs one, goes by itself.
const char* LocalServersResolverFile() noexcept;

}  // namespace Posix

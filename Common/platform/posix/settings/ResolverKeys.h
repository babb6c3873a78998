// Registry keys for the settings of the system's resolver: the host's TCP/IP parameters, with one
// interface below them.
#pragma once

#include "settings/RegistryKey.h"

#include <optional>

namespace Posix {

// Returns the part of the path that names the parameters, if the path leads to one of these keys.
std::optional<Name> ResolverParametersPath(Name path);

// Opens the key at such a path, with the current settings.
std::unique_ptr<Registry::Key> OpenResolverKey(Name path, unsigned int& error);

}  // namespace Posix

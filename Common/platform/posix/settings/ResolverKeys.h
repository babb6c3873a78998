// The keys that stand for the settings of the system's resolver: the machine's TCP/IP parameters,
// with one interface below them.
#pragma once

#include "settings/RegistryKey.h"

#include <optional>

namespace Posix {

// The part of the path that names the parameters, if the path leads to one of these keys.
std::optional<Name> ResolverParametersPath(Name path);

// The key at such a path, with the settings of this moment.
std::unique_ptr<Registry::Key> OpenResolverKey(Name path, unsigned int& error);

}  // namespace Posix

// The settings tree: a directory for each key, a file for each value.
#pragma once

#include "settings/RegistryKey.h"

namespace Posix {

// Opens the key at the path below the local machine's hive.
std::unique_ptr<Registry::Key> OpenTreeKey(Name path, unsigned int& error);

}  // namespace Posix

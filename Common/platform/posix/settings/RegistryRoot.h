// The root of the settings tree.
#pragma once

namespace Posix {

const char* RegistryRoot() noexcept;

}  // namespace Posix

// Where the settings tree lies.
#pragma once

namespace Posix {

const char* RegistryRoot() noexcept;

}  // namespace Posix

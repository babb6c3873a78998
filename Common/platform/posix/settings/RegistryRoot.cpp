#include "settings/RegistryRoot.h"

namespace Posix {

const char* RegistryRoot() noexcept {
    return VELSOCK_REGISTRY_ROOT;
}

}  // namespace Posix

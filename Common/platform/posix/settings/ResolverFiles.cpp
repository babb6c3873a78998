#include "settings/ResolverFiles.h"

namespace Posix {

const char* ResolverFile() noexcept {
    return "/etc/resolv.conf";
}

const char* LocalServersResolverFile() noexcept {
    return "/run/systemd/resolve/resolv.conf";
}

}  // namespace Posix

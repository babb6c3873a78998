#include "system/HostName.h"

#include <unistd.h>

namespace Posix {

HostNameText HostName() noexcept {
    HostNameText name = {};
    // The last byte is kept from the system, which need not terminate a name that it cuts.
    if (::gethostname(name.text, sizeof name.text - 1) < 0) name.text[0] = '\0';
    return name;
}

}  // namespace Posix

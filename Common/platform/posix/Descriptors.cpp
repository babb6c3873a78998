#include "Descriptors.h"

#include <unistd.h>

namespace Posix {

void CloseDescriptor(int descriptor) noexcept {
    const CancellationGuard guard;
    ::close(descriptor);
}

}  // namespace Posix

#include "system/Descriptors.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace Posix {

void CloseDescriptor(int descriptor) noexcept {
    const CancellationGuard guard;
    const int error = errno;
    ::close(descriptor);
    errno = error;
}

int TakePendingError(int descriptor) noexcept {
    int error = 0;
    socklen_t length = sizeof error;
    ::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &length);
    return error;
}

int MoveAboveStandardStreams(int descriptor) noexcept {
    if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
    const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    CloseDescriptor(descriptor);
    return moved;
}

}  // namespace Posix

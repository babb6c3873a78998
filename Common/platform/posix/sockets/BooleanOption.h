// Socket options of the kernel that are on or off.
#pragma once

#include <sys/socket.h>

namespace Posix {

// Returns false with errno if the kernel refuses.
inline bool SetBooleanOption(int descriptor, int level, int option, bool on) noexcept {
    const int value = on ? 1 : 0;
    return ::setsockopt(descriptor, level, option, &value, sizeof value) == 0;
}

}  // namespace Posix

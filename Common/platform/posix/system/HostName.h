// The local host's name as the system reports it.
#pragma once

#include "errors/WinsockError.h"

namespace Posix {

// A buffer for the name and its terminator.
struct HostNameText {
    char text[256];
};

// Returns a Winsock error or None. The name is complete, or empty with an error.
WinsockError HostName(HostNameText& name) noexcept;

}  // namespace Posix

// The local host's name as the system reports it.
#pragma once

namespace Posix {

// A buffer for the name and its terminator.
struct HostNameText {
    char text[256];
};

// Returns a Winsock error or 0. The name is complete, or empty with an error.
int HostName(HostNameText& name) noexcept;

}  // namespace Posix

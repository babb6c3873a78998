// The local computer's name as the system has it.
#pragma once

namespace Posix {

// Room for the name and its terminator.
struct HostNameText {
    char text[256];
};

// The result is a Winsock error or 0. A name is whole, or empty with an error.
int HostName(HostNameText& name) noexcept;

}  // namespace Posix

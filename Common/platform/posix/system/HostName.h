// The local computer's name as the system has it.
#pragma once

namespace Posix {

struct HostNameText {
    char text[256];
};

HostNameText HostName() noexcept;

}  // namespace Posix

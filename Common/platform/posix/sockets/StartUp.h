// Whether Winsock has been started in this process.
#pragma once

namespace Posix {

bool IsStarted() noexcept;

// The same for a call that needs no socket; when it has not, that is the thread's last error.
bool RequireStarted() noexcept;

}  // namespace Posix

// Whether Winsock has been started in this process.
#pragma once

namespace Posix {

bool IsStarted() noexcept;

// The same for a call that needs no socket; if Winsock is not started, sets the last error.
bool RequireStarted() noexcept;

}  // namespace Posix

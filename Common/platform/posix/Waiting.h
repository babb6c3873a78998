// Waits that signals do not cut short.
#pragma once

#include <ctime>

namespace Posix {

inline constexpr long long WithoutLimit = -1;

// The monotonic clock's time in nanoseconds.
long long MonotonicTime() noexcept;

// Waits until one of poll's events, or the peer's end, or the clock's time; a time of WithoutLimit
// waits for ever. Returns false when the time has come first.
bool WaitUntilReady(int descriptor, short events, long long until);

}  // namespace Posix

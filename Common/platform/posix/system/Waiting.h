// Waits that signals do not cut short.
#pragma once

#include <poll.h>

#include <ctime>

namespace Posix {

inline constexpr long long WithoutLimit = -1;

// The monotonic clock's time in nanoseconds.
long long MonotonicTime() noexcept;

timespec TimeFromNanoseconds(long long nanoseconds) noexcept;

// The system's poll, for no longer than until the clock's time; a time of WithoutLimit waits for
// ever.
int PollUntil(pollfd* waits, nfds_t count, long long until);

// Waits until one of poll's events, or the peer's end, or the clock's time; a time of WithoutLimit
// waits for ever. Returns false when the wait ended otherwise, with errno: EAGAIN when the time had
// come, else why the system cannot wait. Once the time is over nothing counts as ready any more, so
// that repeated attempts come to their end.
bool WaitUntilReady(int descriptor, short events, long long until);

}  // namespace Posix

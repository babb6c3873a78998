// Waits that signals do not interrupt.
#pragma once

#include <poll.h>

#include <ctime>

namespace Posix {

inline constexpr long long WithoutLimit = -1;

// Returns the monotonic clock's time in nanoseconds.
long long MonotonicTime() noexcept;

timespec TimeFromNanoseconds(long long nanoseconds) noexcept;

// The system's poll until a time of that clock at most; WithoutLimit waits for ever.
int PollUntil(pollfd* waits, nfds_t count, long long until);

// Waits for one of poll's events or the peer's end, until a time of that clock at most;
// WithoutLimit waits for ever. Returns false with errno otherwise: EAGAIN if the time has come,
// else why poll failed.
//
// Once the time has passed, nothing counts as ready any more, so that a loop of attempts ends.
bool WaitUntilReady(int descriptor, short events, long long until);

}  // namespace Posix

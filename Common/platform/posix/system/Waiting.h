// The monotonic clock, and waits with a deadline by it.
#pragma once

#include <poll.h>

#include <ctime>

namespace Posix {

inline constexpr long long WithoutLimit = -1;

// Returns the monotonic clock's time in nanoseconds.
long long MonotonicTime() noexcept;

timespec TimeFromNanoseconds(long long nanoseconds) noexcept;

// Calls ppoll with a deadline by MonotonicTime, or WithoutLimit. Fails with EINTR after a signal.
int PollUntil(pollfd* waits, nfds_t count, long long until);

// Waits for one of poll's events, POLLERR or POLLHUP until a deadline by MonotonicTime, or
// WithoutLimit; goes on after a signal. Returns false with errno otherwise: EAGAIN if the deadline
// has passed, else why ppoll failed.
//
// Once the deadline has passed, nothing counts as ready any more, so that a loop of attempts ends.
bool WaitUntilReady(int descriptor, short events, long long until);

}  // namespace Posix

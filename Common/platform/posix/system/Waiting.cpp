#include "system/Waiting.h"

#include <algorithm>
#include <cerrno>

namespace Posix {

namespace {

constexpr long long NanosecondsPerSecond = 1'000'000'000;

timespec TimeUntil(long long until) noexcept {
    return TimeFromNanoseconds(std::max(until - MonotonicTime(), 0LL));
}

}  // namespace

long long MonotonicTime() noexcept {
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * NanosecondsPerSecond + now.tv_nsec;
}

timespec TimeFromNanoseconds(long long nanoseconds) noexcept {
    return {.tv_sec = nanoseconds / NanosecondsPerSecond,
            .tv_nsec = nanoseconds % NanosecondsPerSecond};
}

int PollUntil(pollfd* waits, nfds_t count, long long until) {
    const timespec left = TimeUntil(until);
    return ::ppoll(waits, count, until == WithoutLimit ? nullptr : &left, nullptr);
}

bool WaitUntilReady(int descriptor, short events, long long until) {
    pollfd wait = {descriptor, events, 0};
    while (until == WithoutLimit || MonotonicTime() < until) {
        const int ready = PollUntil(&wait, 1, until);
        if (ready > 0) return true;
        if (ready < 0 && errno != EINTR) return false;
    }
    errno = EAGAIN;
    return false;
}

}  // namespace Posix

#include "Waiting.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>

namespace Posix {

namespace {

constexpr long long NanosecondsPerSecond = 1'000'000'000;

timespec TimeUntil(long long until) noexcept {
    const long long left = std::max(until - MonotonicTime(), 0LL);
    return {.tv_sec = left / NanosecondsPerSecond, .tv_nsec = left % NanosecondsPerSecond};
}

}  // namespace

long long MonotonicTime() noexcept {
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * NanosecondsPerSecond + now.tv_nsec;
}

bool WaitUntilReady(int descriptor, short events, long long until) {
    pollfd wait = {descriptor, events, 0};
    int ready = -1;
    do {
        const timespec left = TimeUntil(until);
        ready = ::ppoll(&wait, 1, until == WithoutLimit ? nullptr : &left, nullptr);
    } while (ready < 0 && errno == EINTR);
    return ready != 0;
}

}  // namespace Posix

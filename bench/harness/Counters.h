// What this process asks of memory and of locks, whichever module asks.
#pragma once

namespace Bench {

struct Counters {
    unsigned long allocations = 0;  // malloc, calloc, realloc, aligned_alloc; operator new included
    unsigned long locks = 0;        // pthread_mutex_lock
};

// Since the process began. Exact as long as the process has one thread.
Counters CountedSoFar() noexcept;

inline Counters operator-(const Counters& end, const Counters& begin) noexcept {
    return {end.allocations - begin.allocations, end.locks - begin.locks};
}

inline Counters& operator+=(Counters& sum, const Counters& more) noexcept {
    sum.allocations += more.allocations;
    sum.locks += more.locks;
    return sum;
}

}  // namespace Bench

#include "Counters.h"

#include <dlfcn.h>
#include <pthread.h>

#include <cstddef>

// The C library's own entry points, under the names that it keeps for a program that takes the
// usual ones.
// NOLINTBEGIN(bugprone-reserved-identifier): the names are the C library's.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

constinit Bench::Counters counted;

using LockMutex = int (*)(pthread_mutex_t*);

LockMutex SystemLock() noexcept {
    static const auto lock = reinterpret_cast<LockMutex>(::dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    return lock;
}

}  // namespace

Bench::Counters Bench::CountedSoFar() noexcept {
    return counted;
}

// The module's requests come here too: a program's functions stand before those of the libraries.
extern "C" {

[[gnu::visibility("default")]] void* malloc(std::size_t size) {
    ++counted.allocations;
    return __libc_malloc(size);
}

[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) {
    ++counted.allocations;
    return __libc_calloc(count, size);
}

[[gnu::visibility("default")]] void* realloc(void* block, std::size_t size) {
    ++counted.allocations;
    return __libc_realloc(block, size);
}

[[gnu::visibility("default")]] void* aligned_alloc(std::size_t alignment, std::size_t size) {
    ++counted.allocations;
    return __libc_memalign(alignment, size);
}

[[gnu::visibility("default")]] int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    ++counted.locks;
    return SystemLock()(mutex);
}

}  // extern "C"

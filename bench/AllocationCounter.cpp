#include "AllocationCounter.h"

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

unsigned long allocations = 0;

}  // namespace

unsigned long CountedAllocations() noexcept {
    return allocations;
}

// The module's requests come here too: a program's functions stand before those of the libraries.
extern "C" {

[[gnu::visibility("default")]] void* malloc(std::size_t size) {
    ++allocations;
    return __libc_malloc(size);
}

[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) {
    ++allocations;
    return __libc_calloc(count, size);
}

[[gnu::visibility("default")]] void* realloc(void* block, std::size_t size) {
    ++allocations;
    return __libc_realloc(block, size);
}

[[gnu::visibility("default")]] void* aligned_alloc(std::size_t alignment, std::size_t size) {
    ++allocations;
    return __libc_memalign(alignment, size);
}

}  // extern "C"

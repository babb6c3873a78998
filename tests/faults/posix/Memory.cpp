#include "faults/posix/Memory.h"

#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

#include "support/posix/Interception.h"

// The C library's own, by the names that it keeps for those who define theirs.
extern "C" {
void* __libc_malloc(std::size_t size);
void __libc_free(void* block);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace Faults {

namespace {

constinit std::atomic<long long> blocks = 0;
constinit std::atomic<long long> bytes = 0;

constinit std::atomic<bool> armed = false;
constinit std::atomic<Allocator> failing = Allocator::Module;
constinit std::atomic<unsigned int> failingFrom = 0;
constinit std::atomic<bool> failingOn = false;
constinit std::atomic<bool> failed = false;
constinit std::atomic<unsigned int> counts[2] = {0, 0};

bool IsTheOne(Allocator allocator) noexcept {
    const unsigned int n = ++counts[static_cast<int>(allocator)];
    if (allocator != failing || failingFrom == 0) return false;
    const bool fails = failingOn ? n >= failingFrom : n == failingFrom;
    if (fails) failed = true;
    return fails;
}

// Whether the allocation of this caller is to fail. Nothing else is asked while no fault is set,
// since the first allocations come before the program's beginning.
bool Fails(const void* caller) noexcept {
    if (!armed.load(std::memory_order_relaxed)) return false;
    if (SystemCalls::IsPassing()) return IsTheOne(Allocator::SystemLibrary);
    return SystemCalls::IsUnderTest(caller) && IsTheOne(Allocator::Module);
}

void* Counted(void* block) noexcept {
    if (block == nullptr) return nullptr;
    blocks.fetch_add(1, std::memory_order_relaxed);
    bytes.fetch_add(static_cast<long long>(::malloc_usable_size(block)), std::memory_order_relaxed);
    return block;
}

void Uncount(void* block) noexcept {
    if (block == nullptr) return;
    blocks.fetch_sub(1, std::memory_order_relaxed);
    bytes.fetch_sub(static_cast<long long>(::malloc_usable_size(block)), std::memory_order_relaxed);
}

void* OutOfMemory() noexcept {
    errno = ENOMEM;
    return nullptr;
}

void* New(std::size_t size, const void* caller) noexcept {
    return Fails(caller) ? nullptr : Counted(__libc_malloc(size == 0 ? 1 : size));
}

}  // namespace

HeapUse CurrentHeapUse() noexcept {
    return {blocks, bytes};
}

void FailAllocation(Allocator allocator, unsigned int n, bool lasting) noexcept {
    for (auto& count : counts)
        count = 0;
    failing = allocator;
    failingFrom = n;
    failingOn = lasting;
    failed = false;
    armed = true;
}

void FailNoAllocation() noexcept {
    armed = false;
}

unsigned int AllocationsOf(Allocator allocator) noexcept {
    return counts[static_cast<int>(allocator)];
}

bool HasAllocationFailed() noexcept {
    return failed;
}

}  // namespace Faults

using namespace Faults;

extern "C" {

void* malloc(std::size_t size) noexcept {
    if (Fails(__builtin_return_address(0))) return OutOfMemory();
    return Counted(__libc_malloc(size));
}

void free(void* block) noexcept {
    Uncount(block);
    __libc_free(block);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    if (Fails(__builtin_return_address(0))) return OutOfMemory();
    return Counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) noexcept {
    if (Fails(__builtin_return_address(0))) return OutOfMemory();
    Uncount(block);
    void* const moved = __libc_realloc(block, size);
    if (moved == nullptr && size != 0) return Counted(block), nullptr;
    return Counted(moved);
}

void* memalign(std::size_t alignment, std::size_t size) noexcept {
    if (Fails(__builtin_return_address(0))) return OutOfMemory();
    return Counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    if (Fails(__builtin_return_address(0))) return OutOfMemory();
    return Counted(__libc_memalign(alignment, size));
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    if (Fails(__builtin_return_address(0))) return ENOMEM;
    void* const made = Counted(__libc_memalign(alignment, size));
    if (made != nullptr) *block = made;
    return made == nullptr ? ENOMEM : 0;
}

}  // extern "C"

void* operator new(std::size_t size) {
    if (void* const block = New(size, __builtin_return_address(0))) return block;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    if (void* const block = New(size, __builtin_return_address(0))) return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return New(size, __builtin_return_address(0));
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return New(size, __builtin_return_address(0));
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

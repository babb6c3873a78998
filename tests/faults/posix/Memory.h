// The program's memory: how much of it is in use, and the failure of one allocation. This program
// defines malloc and its relatives and operator new, which the module and the C library find.
#pragma once

#include <cstddef>

namespace Faults {

struct HeapUse {
    long long blocks;
    long long bytes;
    bool operator==(const HeapUse&) const = default;
    HeapUse operator-(const HeapUse& other) const {
        return {blocks - other.blocks, bytes - other.bytes};
    }
};

// Of the whole process.
HeapUse CurrentHeapUse() noexcept;

// Whose allocations fail: the module's own, or those that the C library makes while it works for
// the module.
enum class Allocator { Module, SystemLibrary };

// Lets the n-th allocation fail, counted from 1, or that and all further ones; 0 fails none.
void FailAllocation(Allocator allocator, unsigned int n, bool lasting) noexcept;
// Ends that.
void FailNoAllocation() noexcept;

// Since FailAllocation.
unsigned int AllocationsOf(Allocator allocator) noexcept;
bool HasAllocationFailed() noexcept;

}  // namespace Faults

// Operations that run out of memory, at each of their allocations in turn.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <new>

#include "scripted/Allocations.h"

namespace Support {

// What became of an operation one of whose allocations was to fail.
struct Starved {
    bool happened;     // the allocation came
    bool outOfMemory;  // the operation threw std::bad_alloc
};

// Runs the operation with its n-th allocation failing. What it makes must be kept outside, or the
// end of that is part of the operation.
template <class Operation>
Starved Starve(std::size_t n, Operation operation) {
    const Scripted::Allocations::FailNth failing(n);
    bool outOfMemory = false;
    try {
        operation();
    } catch (const std::bad_alloc&) {
        outOfMemory = true;
    }
    return {failing.Happened(), outOfMemory};
}

// Attempts an operation again and again; the attempt fails the n-th allocation and answers whether
// it came. Returns how many were failed.
template <class Attempt>
std::size_t FailEveryAllocation(Attempt attempt) {
    std::size_t n = 1;
    while (attempt(n) && !::testing::Test::HasFailure())
        ++n;
    return n - 1;
}

// Runs the operation with its n-th allocation failing. True when the operation made that many: it
// then must have thrown std::bad_alloc, and else must not.
template <class Operation>
bool RunsOutOfMemory(std::size_t n, Operation operation) {
    const Starved starved = Starve(n, operation);
    EXPECT_EQ(starved.outOfMemory, starved.happened) << "allocation " << n;
    return starved.happened;
}

// The operation must throw std::bad_alloc whenever one of its allocations fails, and need at least
// that many.
template <class Operation>
void ExpectBadAllocFromEveryAllocation(std::size_t atLeast, Operation operation) {
    EXPECT_GE(FailEveryAllocation([&](std::size_t n) { return RunsOutOfMemory(n, operation); }),
              atLeast);
}

}  // namespace Support

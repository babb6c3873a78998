// Runs an operation with each of its allocations failing in turn.
#pragma once

#include <gtest/gtest.h>

#include <new>

#include "scripted/Allocations.h"

namespace Support {

// The operation must throw std::bad_alloc whenever one of its allocations fails, and need at least
// so many.
template <class Operation>
void ExpectBadAllocFromEveryAllocation(int atLeast, Operation operation) {
    for (int number = 1;; ++number) {
        bool threw = false;
        const Scripted::Allocations::FailNth failing(static_cast<std::size_t>(number));
        try {
            operation();
        } catch (const std::bad_alloc&) {
            threw = true;
        }
        EXPECT_EQ(threw, failing.Happened()) << "allocation " << number;
        if (!failing.Happened()) {
            EXPECT_GT(number, atLeast);
            return;
        }
    }
}

}  // namespace Support

// Counts what each case's operations ask for.
#pragma once

#include "Work.h"

namespace Bench {

struct Runs {
    int warmUp = 2;
    int measured = 5;
};

// Prints for each case the lines "ROW SUBJECT operations N", and so on for allocations and locks.
// All of them are for one operation, but the first, which is how many were measured: a tracer's or
// an instruction counter's sums are divided by it.
void CountCases(const Cases& cases, const Runs& runs = {});

}  // namespace Bench

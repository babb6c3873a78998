// The faults that a scene is played with.
#pragma once

#include <vector>

#include "faults/posix/Campaign.h"
#include "faults/posix/Injector.h"

namespace Faults {

// What a scene does when nothing fails.
struct Counts {
    unsigned int coldCalls[CallKinds];  // in the first run of a process
    unsigned int calls[CallKinds];
    unsigned int allocations[2];  // as Allocator has them
    unsigned int allCalls;
    unsigned int points;  // see Injector
    int descriptorsEnd;
};

std::vector<Fault> FaultsOf(Stage stage, const Counts& counts, bool all);

}  // namespace Faults

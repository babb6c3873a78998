// What a process has of the system's things and of memory, to be compared before and after.
#pragma once

#include <string>

#include "faults/posix/Memory.h"
#include "support/posix/ProcessState.h"

namespace Faults {

class Ledger {
public:
    static Ledger Now();

    // What differs besides the memory; empty if nothing does. The module makes its thread key in a
    // process's first run.
    std::string DifferenceTo(const Ledger& later, bool mayHaveMadeKey) const;
    HeapUse Heap() const noexcept { return heap_; }

private:
    Support::ProcessState process_;
    bool isLayerDown_ = true;
    HeapUse heap_ = {};
};

}  // namespace Faults

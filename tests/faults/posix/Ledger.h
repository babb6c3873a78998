// What a process has of the system's things, to be compared before and after.
#pragma once

#include <csignal>
#include <string>
#include <vector>

#include "faults/posix/Memory.h"

namespace Faults {

class Ledger {
public:
    static Ledger Now();

    // What differs besides the memory; empty if nothing does. The module makes its thread key in a
    // process's first run.
    std::string DifferenceTo(const Ledger& later, bool withKeys) const;
    HeapUse Heap() const noexcept { return heap_; }

private:
    static constexpr int MostDescriptors = 64;

    bool open_[MostDescriptors] = {};
    long threads_ = 0;
    unsigned int nextKey_ = 0;
    unsigned long long blockedSignals_ = 0;
    bool isCancellable_ = true;
    bool isLayerDown_ = true;
    HeapUse heap_ = {};
};

}  // namespace Faults

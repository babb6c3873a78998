// A system without memory, as far as operator new goes.
#pragma once

namespace Support {

// Fails the calling thread's allocations for its lifetime, all but the first ones.
class FailingAllocations {
public:
    explicit FailingAllocations(unsigned int successes = 0) noexcept;
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;
};

}  // namespace Support

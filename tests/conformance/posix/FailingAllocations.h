// A system without memory, as far as operator new goes.
#pragma once

namespace Conformance {

// Fails all of the calling thread's allocations for its lifetime.
class FailingAllocations {
public:
    FailingAllocations() noexcept;
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;
};

}  // namespace Conformance

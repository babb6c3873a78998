#include "FailingAllocations.h"

#include <cstdlib>
#include <new>

namespace {

constexpr unsigned int Unlimited = ~0U;
constinit thread_local unsigned int successesLeft = Unlimited;

void* Allocate(std::size_t size) noexcept {
    if (successesLeft == 0) return nullptr;
    if (successesLeft != Unlimited) --successesLeft;
    return std::malloc(size > 0 ? size : 1);
}

}  // namespace

namespace Conformance {

FailingAllocations::FailingAllocations(unsigned int successes) noexcept {
    successesLeft = successes;
}

FailingAllocations::~FailingAllocations() {
    successesLeft = Unlimited;
}

}  // namespace Conformance

// The forms for arrays come to these.
void* operator new(std::size_t size) {
    if (void* const block = Allocate(size)) return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}

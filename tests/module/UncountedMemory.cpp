// The scripted platform's memory where nobody counts it. The test program and the module have one
// language library between them, and that library's operator new is not the program's to replace.
#include "scripted/platform/Call.h"

namespace Scripted {

Counted::Counted() noexcept : depth_(0) {}
Counted::~Counted() = default;

void BeginAllocations() noexcept {}

Live LiveMemory() noexcept {
    return {.blocks = 0, .bytes = 0};
}

Allocations::Uncounted::Uncounted() noexcept {}
Allocations::Uncounted::~Uncounted() = default;

}  // namespace Scripted

#include <new>

#include "StandIns.h"
#include "scripted/Transcript.h"

namespace Module {

namespace {

constexpr int Spoilt = 4343;

void* Allocate(std::size_t size) {
    Scripted::SetLastError(Spoilt);
    return ::operator new(size);
}

}  // namespace

// The name is the compiler's.
std::vector<StandIn> MemoryStandIns() {
    return {{"libstdc++-6.dll", "_Znwy", reinterpret_cast<void*>(Allocate)}};
}

}  // namespace Module

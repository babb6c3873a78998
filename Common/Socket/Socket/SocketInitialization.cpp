#include "VelNet/SocketInitialization.h"

#include "Socket/SocketAPI.h"
#include "Socket/StartUpLock.h"

#include <memory>
#include <new>

namespace VelNet {

namespace {

// Memory for a state, without an object in it: SocketAPI constructs and destroys that.
struct FreeStateMemory {
    void operator()(SocketLayerState* memory) const noexcept {
        std::allocator<SocketLayerState>().deallocate(memory, 1);
    }
};
using StateMemory = std::unique_ptr<SocketLayerState, FreeStateMemory>;

StateMemory AllocateState() noexcept {
    return StateMemory(
        static_cast<SocketLayerState*>(::operator new(sizeof(SocketLayerState), std::nothrow)));
}

}  // namespace

SocketInitialization::SocketInitialization() {
    const StartUpGuard guard;
    if (++g_socketInitializationCount != 1) return;

    StateMemory memory = AllocateState();
    // Required (StartUpFailure.OfMemoryForTheStateIsCountedAndStartsNothing): counts nevertheless,
    // without a state.
    if (memory == nullptr) return;

    try {
        SocketAPI::Initialize(*memory);
    } catch (...) {
        --g_socketInitializationCount;
        throw;
    }
    Publish(*memory.release());
}

SocketInitialization::~SocketInitialization() {
    const StartUpGuard guard;
    // Required (StartUp.EndOfAnObjectTooManyMakesTheCountNegativeAndShutsNothingDown): nothing
    // keeps the count from going below zero.
    if (--g_socketInitializationCount != 0) return;
    if (g_socketLayer == nullptr) return;

    SocketAPI::Finalize(*g_socketLayer);
    FreeStateMemory{}(g_socketLayer);
    Unpublish();
}

SocketInitialization& SocketInitialization::operator=(const SocketInitialization&) noexcept =
    default;

}  // namespace VelNet

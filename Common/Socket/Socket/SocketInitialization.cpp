#include <VelNet/SocketInitialization.h>

#include <Platform/System.h>
#include <Socket/SocketAPI.h>
#include <Socket/StartUpLock.h>

#include <memory>
#include <new>

namespace VelNet {

constinit std::atomic<unsigned int> g_startUpLock = 0;
constinit int g_socketInitializationCount = 0;

StartUpGuard::StartUpGuard() {
    while (g_startUpLock.exchange(StartUpLockHeld, std::memory_order_acquire) == StartUpLockHeld) {
        System::Sleep(0);
    }
}

StartUpGuard::~StartUpGuard() {
    g_startUpLock.exchange(0, std::memory_order_release);
}

namespace {

// Memory for a state, without the state's own life: that is SocketAPI's business.
struct FreeStateMemory {
    void operator()(SocketLayerState* memory) const noexcept { ::operator delete(memory); }
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
    if (memory == nullptr) return;  // counted all the same, with nothing published

    try {
        SocketAPI::Initialize(*memory);
    } catch (...) {
        --g_socketInitializationCount;
        throw;
    }
    g_socketLayer = memory.release();
}

SocketInitialization::~SocketInitialization() {
    const StartUpGuard guard;
    if (--g_socketInitializationCount != 0) return;
    if (g_socketLayer == nullptr) return;

    SocketAPI::Finalize(*g_socketLayer);
    FreeStateMemory{}(g_socketLayer);
    g_socketLayer = nullptr;
}

SocketInitialization& SocketInitialization::operator=(const SocketInitialization&) noexcept =
    default;

}  // namespace VelNet

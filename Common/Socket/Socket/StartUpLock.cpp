#include "Socket/StartUpLock.h"

#include "Platform/System.h"

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

}  // namespace VelNet

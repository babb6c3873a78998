// The lock that serializes start-up and shut-down. Sockets, addresses and lists have none.
#pragma once

#include <atomic>

namespace VelNet {

inline constexpr unsigned int StartUpLockHeld = 0x12345678;

// StartUpLockHeld while the lock is held. Required (StartUpLock.AnyWordButTheHoldersIsFree): any
// other value means that it is free.
extern constinit std::atomic<unsigned int> g_startUpLock;

// The number of living SocketInitialization objects. Changed under the lock.
extern constinit int g_socketInitializationCount;

// Holds the lock for a scope. Spins without limit while another thread holds it, yielding to other
// threads.
class StartUpGuard {
public:
    StartUpGuard();
    ~StartUpGuard();
    StartUpGuard(const StartUpGuard&) = delete;
    StartUpGuard& operator=(const StartUpGuard&) = delete;
};

}  // namespace VelNet

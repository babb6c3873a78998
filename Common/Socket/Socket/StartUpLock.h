// The lock that serialises start-up and shut-down. Sockets, addresses and lists have none.
#pragma once

#include <atomic>

namespace VelNet {

inline constexpr unsigned int StartUpLockHeld = 0x12345678;

// StartUpLockHeld while somebody holds it; any other value means that it is free.
extern constinit std::atomic<unsigned int> g_startUpLock;

// How many SocketInitialization objects live. Changed under the lock.
extern constinit int g_socketInitializationCount;

// Holds the lock for a scope. Whoever finds it taken gives way to other threads and tries again,
// without limit.
class StartUpGuard {
public:
    StartUpGuard();
    ~StartUpGuard();
    StartUpGuard(const StartUpGuard&) = delete;
    StartUpGuard& operator=(const StartUpGuard&) = delete;
};

}  // namespace VelNet

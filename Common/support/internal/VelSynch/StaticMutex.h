// A mutex for static storage.
#pragma once

#include "Platform/System.h"

namespace VelSynch {

// Constant-initialized and never destroyed, so that it can be used before the first dynamic
// initializer and after the last destructor of the process; std::mutex promises only the former,
// and on Windows keeps neither. Not recursive. For use with std::lock_guard.
class StaticMutex {
public:
    constexpr StaticMutex() noexcept = default;
    StaticMutex(const StaticMutex&) = delete;
    StaticMutex& operator=(const StaticMutex&) = delete;

    void lock() noexcept { System::AcquireLock(lock_); }
    void unlock() noexcept { System::ReleaseLock(lock_); }

private:
    System::Lock lock_ = {};
};

}  // namespace VelSynch

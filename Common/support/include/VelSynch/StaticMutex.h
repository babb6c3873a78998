// A mutex for static storage.
#pragma once

#include <atomic>

namespace VelSynch {

// Made at compile time and never ended, so that it can be used before the first dynamic initialiser
// and after the last destructor of the process; std::mutex promises only the former, and on Windows
// keeps neither. With mingw-w64 the waiting itself uses the run-time library's own state, which is
// made on first use. Not recursive. For use with std::lock_guard.
class StaticMutex {
public:
    constexpr StaticMutex() noexcept = default;
    StaticMutex(const StaticMutex&) = delete;
    StaticMutex& operator=(const StaticMutex&) = delete;

    void lock() noexcept {
        while (locked_.exchange(1, std::memory_order_acquire) != 0) {
            locked_.wait(1, std::memory_order_relaxed);
        }
    }

    void unlock() noexcept {
        locked_.store(0, std::memory_order_release);
        locked_.notify_one();
    }

private:
    std::atomic<int> locked_ = 0;
};

}  // namespace VelSynch

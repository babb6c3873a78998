#include <Platform/System.h>

#include <condition_variable>
#include <mutex>

namespace {

// Of all locks. Waiting on the lock's own byte, as atomics offer it, sleeps for ever on systems
// without the means for it below: the library there looks at the byte and goes to sleep in two
// steps.
std::mutex mutex;
std::condition_variable released;

bool IsHeld(const System::Lock& lock) {
    return lock.storage[0] != 0;
}

}  // namespace

void System::Lock::lock() noexcept {
    std::unique_lock guard(mutex);
    released.wait(guard, [&] { return !IsHeld(*this); });
    storage[0] = 1;
}

void System::Lock::unlock() noexcept {
    {
        const std::lock_guard guard(mutex);
        storage[0] = 0;
    }
    released.notify_all();
}

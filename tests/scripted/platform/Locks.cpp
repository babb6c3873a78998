#include <Platform/System.h>

#include <atomic>

namespace {

std::atomic_ref<unsigned char> StateOf(System::Lock& lock) {
    return std::atomic_ref(lock.storage[0]);
}

}  // namespace

void System::AcquireLock(Lock& lock) noexcept {
    while (StateOf(lock).exchange(1, std::memory_order_acquire) != 0)
        StateOf(lock).wait(1);
}

// Notifying first asks whether anybody waits. After a mere release that question may pass the store
// by, and who begins to wait in between sleeps for ever.
void System::ReleaseLock(Lock& lock) noexcept {
    StateOf(lock).store(0, std::memory_order_seq_cst);
    StateOf(lock).notify_one();
}

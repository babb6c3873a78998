#include "Platform/System.h"

#include <windows.h>

namespace {

static_assert(sizeof(SRWLOCK) <= sizeof(System::Lock));
static_assert(alignof(SRWLOCK) <= alignof(System::Lock));

// SRWLOCK_INIT is all zeros.
SRWLOCK* ExclusiveIn(System::Lock& lock) noexcept {
    return static_cast<SRWLOCK*>(static_cast<void*>(lock.storage));
}

}  // namespace

void System::Lock::lock() noexcept {
    ::AcquireSRWLockExclusive(ExclusiveIn(*this));
}

void System::Lock::unlock() noexcept {
    ::ReleaseSRWLockExclusive(ExclusiveIn(*this));
}

#include "Platform/System.h"

#include <pthread.h>

namespace {

static_assert(sizeof(pthread_mutex_t) <= sizeof(System::Lock));
static_assert(alignof(pthread_mutex_t) <= alignof(System::Lock));

// PTHREAD_MUTEX_INITIALIZER is all zeros.
pthread_mutex_t* MutexIn(System::Lock& lock) noexcept {
    return static_cast<pthread_mutex_t*>(static_cast<void*>(lock.storage));
}

}  // namespace

void System::Lock::lock() noexcept {
    ::pthread_mutex_lock(MutexIn(*this));
}

void System::Lock::unlock() noexcept {
    ::pthread_mutex_unlock(MutexIn(*this));
}

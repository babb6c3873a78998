#include "support/posix/ProcessState.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

namespace Support {

namespace {

long ListedThreads() {
    struct stat status = {};
    return ::stat("/proc/self/task", &status) == 0 ? static_cast<long>(status.st_nlink) - 2 : -1;
}

// The system lists a thread for a moment after it has been joined.
long ThreadCount() {
    for (int wait = 0; wait < 2000 && ListedThreads() > 1; ++wait)
        ::usleep(1000);
    return ListedThreads();
}

// The C library gives out the lowest key that is free.
unsigned int NextKey() {
    pthread_key_t key = 0;
    if (::pthread_key_create(&key, nullptr) != 0) return ~0U;
    ::pthread_key_delete(key);
    return key;
}

unsigned long long BlockedSignals() {
    sigset_t blocked;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    unsigned long long bits = 0;
    for (int signal = 1; signal < 64; ++signal)
        if (::sigismember(&blocked, signal) == 1) bits |= 1ULL << static_cast<unsigned>(signal);
    return bits;
}

bool IsCancellable() {
    int state = 0;
    ::pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &state);
    return state == PTHREAD_CANCEL_ENABLE;
}

}  // namespace

int ProcessState::DescriptorAt(int place) noexcept {
    return place < OfEach ? place : HighDescriptors + place - OfEach;
}

ProcessState ProcessState::Now() {
    ProcessState now;
    for (int place = 0; place < 2 * OfEach; ++place)
        now.open_[place] = ::fcntl(DescriptorAt(place), F_GETFD) >= 0;
    now.threads_ = ThreadCount();
    now.nextKey_ = NextKey();
    now.blockedSignals_ = BlockedSignals();
    now.isCancellable_ = IsCancellable();
    return now;
}

std::string ProcessState::DifferenceTo(const ProcessState& later, bool mayHaveMadeKey) const {
    std::string text;
    for (int place = 0; place < 2 * OfEach; ++place) {
        if (open_[place] != later.open_[place])
            text += " descriptor " + std::to_string(DescriptorAt(place));
    }
    if (threads_ != later.threads_) text += " threads";
    const bool hasMadeKey = mayHaveMadeKey && later.nextKey_ == nextKey_ + 1;
    if (later.nextKey_ != nextKey_ && !hasMadeKey) text += " thread keys";
    if (blockedSignals_ != later.blockedSignals_) text += " signal mask";
    if (isCancellable_ != later.isCancellable_) text += " cancellation";
    return text;
}

}  // namespace Support

#include "support/posix/SignalStorm.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>

namespace Support {

namespace {

constinit std::atomic<unsigned long long> delivered = 0;

void Count(int) {
    ++delivered;
}

int SignalOf(const SignalStorm::Kind& kind) {
    const int signal = kind.restarts ? SIGUSR2 : SIGUSR1;
    struct sigaction action = {};
    action.sa_handler = Count;
    action.sa_flags = kind.restarts ? SA_RESTART : 0;
    ::sigaction(signal, &action, nullptr);
    return signal;
}

timer_t TimerOf(const SignalStorm::Kind& kind) {
    sigevent event = {};
    event.sigev_notify = SIGEV_THREAD_ID;
    event.sigev_signo = SignalOf(kind);
    event._sigev_un._tid = ::gettid();
    timer_t timer = {};
    if (::timer_create(CLOCK_MONOTONIC, &event, &timer) != 0)
        throw std::system_error(errno, std::generic_category(), "timer_create");
    return timer;
}

void Start(timer_t timer, unsigned int perSecond) {
    const timespec pause = {0, 999'999'999 / static_cast<long>(perSecond)};
    const itimerspec times = {.it_interval = pause, .it_value = pause};
    ::timer_settime(timer, 0, &times, nullptr);
}

}  // namespace

SignalStorm::SignalStorm(const Kind& kind) : isBlowing_(kind.perSecond > 0) {
    if (!isBlowing_) return;
    timer_ = TimerOf(kind);
    Start(timer_, kind.perSecond);
}

SignalStorm::~SignalStorm() {
    if (isBlowing_) ::timer_delete(timer_);
}

unsigned long long SignalStorm::Delivered() noexcept {
    return delivered;
}

}  // namespace Support

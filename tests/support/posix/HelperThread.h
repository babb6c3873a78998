// A thread that works for another one, which may be cancelled, or fork.
#pragma once

#include <pthread.h>
#include <unistd.h>

#include <thread>
#include <utility>

namespace Support {

// Puts off the calling thread's cancellation for its lifetime.
class Uncancelled {
public:
    Uncancelled() noexcept { ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &former_); }
    ~Uncancelled() { ::pthread_setcancelstate(former_, nullptr); }
    Uncancelled(const Uncancelled&) = delete;
    Uncancelled& operator=(const Uncancelled&) = delete;

private:
    int former_ = 0;
};

// Is asked to stop and joined at the end, unless it is not there in a forked process. Joining is no
// point at which the one who waits may be cancelled: the standard's own threads would end the
// program then.
class HelperThread {
public:
    template <class Function>
    explicit HelperThread(Function&& function) : thread_(std::forward<Function>(function)) {}
    ~HelperThread() {
        thread_.request_stop();
        Join();
    }
    HelperThread(const HelperThread&) = delete;
    HelperThread& operator=(const HelperThread&) = delete;

    void Join() {
        if (!thread_.joinable()) return;
        const Uncancelled whole;
        ::getpid() == process_ ? thread_.join() : thread_.detach();
    }

private:
    const pid_t process_ = ::getpid();
    std::jthread thread_;
};

}  // namespace Support

// Signals that come in masses, for code that must not notice them.
#pragma once

#include <ctime>

namespace Support {

// For its lifetime the calling thread gets so many signals each second, which a handler counts.
// Those that restart (SA_RESTART) and those that interrupt calls have numbers of their own, SIGUSR2
// and SIGUSR1, whose handlers stay.
class SignalStorm {
public:
    struct Kind {
        unsigned int perSecond = 0;  // 0: none
        bool restarts = false;
    };

    // Throws std::system_error if the system has no timer left.
    explicit SignalStorm(const Kind& kind);
    ~SignalStorm();
    SignalStorm(const SignalStorm&) = delete;
    SignalStorm& operator=(const SignalStorm&) = delete;

    // To all threads of the process, since its beginning.
    static unsigned long long Delivered() noexcept;

private:
    bool isBlowing_;
    timer_t timer_ = {};
};

}  // namespace Support

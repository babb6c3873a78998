// Limits how long a transfer may take that signals or partial results interrupt.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// The differences between the two directions of a transfer.
struct Direction {
    std::uint32_t timeoutFlag;
    int timeoutOption;
    short readyEvent;
};
extern const Direction Receiving;
extern const Direction Sending;

// Limits all attempts of a transfer together by the socket's timeout. The first attempt is left to
// the kernel, which applies SO_RCVTIMEO or SO_SNDTIMEO; only if a signal or a partial result cuts
// it short is the remaining time counted here.
class TransferDeadline {
public:
    TransferDeadline(const Socket& socket, const Direction& direction) noexcept;

    // The flags that the next attempt must add.
    int AttemptFlags() const noexcept { return attemptFlags_; }

    // After an attempt that failed: waits for the next one if it was interrupted or not ready.
    // Returns false if there must be none; errno holds the reason.
    bool AllowsAnother();

    // After an attempt that transferred only a part: waits for the next one.
    bool AllowsRest();

private:
    static constexpr long long NotCounting = -1;

    long long Deadline() noexcept;

    const Socket& socket_;
    const Direction& direction_;
    long long start_;
    int attemptFlags_ = 0;
};

// Repeats the attempt, which takes the flags to add and returns the system call's result.
template <typename Attempt>
auto RepeatInterrupted(TransferDeadline& deadline, Attempt attempt) {
    auto result = attempt(deadline.AttemptFlags());
    while (result < 0 && deadline.AllowsAnother())
        result = attempt(deadline.AttemptFlags());
    return result;
}

}  // namespace Posix

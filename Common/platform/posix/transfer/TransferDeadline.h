// How long one transfer may go on when signals or the kernel's short counts interrupt it.
#pragma once

#include "sockets/SocketTable.h"

namespace Posix {

// What distinguishes the two directions of a transfer.
struct Direction {
    std::uint32_t timeoutFlag;
    int timeoutOption;
    short readyEvent;
};
extern const Direction Receiving;
extern const Direction Sending;

// Bounds all attempts of a transfer together by the socket's time-out. The first attempt is left to
// the kernel, which knows the time-out; only when it was cut short is the rest of the time counted
// here.
class TransferDeadline {
public:
    TransferDeadline(const Socket& socket, const Direction& direction) noexcept;

    // What the next attempt must add to its flags.
    int AttemptFlags() const noexcept { return attemptFlags_; }

    // After an attempt that failed: waits for the next one if it was only interrupted or not ready.
    // False when there must be none; errno says why.
    bool AllowsAnother();

    // After an attempt that moved only a part: waits for the next one.
    bool AllowsRest();

private:
    static constexpr long long NotCounting = -1;

    long long Deadline() noexcept;

    const Socket& socket_;
    const Direction& direction_;
    long long start_;
    int attemptFlags_ = 0;
};

// Repeats the attempt, which takes the flags to add and returns what the system call returned.
template <typename Attempt>
auto RepeatInterrupted(TransferDeadline& deadline, Attempt attempt) {
    auto result = attempt(deadline.AttemptFlags());
    while (result < 0 && deadline.AllowsAnother())
        result = attempt(deadline.AttemptFlags());
    return result;
}

}  // namespace Posix

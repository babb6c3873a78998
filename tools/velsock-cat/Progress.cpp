#include "Progress.h"

#include <algorithm>

namespace VelSockCat {

void Progress::SenderWaits() {
    const std::lock_guard lock(mutex_);
    sender_ = Sender::Waiting;
    changed_.notify_one();
}

bool Progress::SenderResumes() {
    const std::lock_guard lock(mutex_);
    if (HasEnded()) return false;
    sender_ = Sender::Busy;
    return true;
}

void Progress::SenderEnds(const std::optional<VelSockTools::Failure>& failure) {
    const std::lock_guard lock(mutex_);
    KeepFirst(failure);
    sender_ = Sender::Ended;
    changed_.notify_one();
}

void Progress::ReceiverEnds(const std::optional<VelSockTools::Failure>& failure) {
    const std::lock_guard lock(mutex_);
    KeepFirst(failure);
    receiverHasEnded_ = true;
    changed_.notify_one();
}

// The waiting thread looks for itself.
void Progress::ReceiverGoesOn() {
    const std::lock_guard lock(mutex_);
    lastBytes_ = Clock::now();
}

Progress::State Progress::AwaitSender() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return HasEnded() || sender_ == Sender::Ended; });
    return CurrentState();
}

Progress::State Progress::AwaitEndUntil(Clock::time_point moment) {
    std::unique_lock lock(mutex_);
    changed_.wait_until(lock, moment, [this] { return HasEnded(); });
    return CurrentState();
}

Progress::State Progress::AwaitEndOrSilence(Clock::duration silence) {
    const Clock::time_point begin = Clock::now();
    std::unique_lock lock(mutex_);
    while (!HasEnded()) {
        const Clock::time_point end = std::max(begin, lastBytes_) + silence;
        if (Clock::now() >= end) break;
        changed_.wait_until(lock, end);
    }
    return CurrentState();
}

Progress::State Progress::AwaitEnd() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return HasEnded(); });
    return CurrentState();
}

void Progress::KeepFirst(const std::optional<VelSockTools::Failure>& failure) {
    if (!failure_) failure_ = failure;
}

bool Progress::HasEnded() const {
    if (failure_) return true;
    return receiverHasEnded_ &&
           (sender_ == Sender::Ended || (sender_ == Sender::Waiting && !sendsWholeInput_));
}

Progress::State Progress::CurrentState() const {
    return {failure_, HasEnded(), receiverHasEnded_ && sender_ == Sender::Ended,
            sender_ == Sender::Busy};
}

}  // namespace VelSockCat

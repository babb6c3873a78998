#include "Progress.h"

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

Progress::Ending Progress::WaitForEnding() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return HasEnded(); });
    return {failure_, receiverHasEnded_ && sender_ == Sender::Ended,
            receiverHasEnded_ && sender_ != Sender::Busy};
}

void Progress::KeepFirst(const std::optional<VelSockTools::Failure>& failure) {
    if (!failure_) failure_ = failure;
}

bool Progress::HasEnded() const {
    return failure_.has_value() || (receiverHasEnded_ && sender_ != Sender::Busy);
}

}  // namespace VelSockCat

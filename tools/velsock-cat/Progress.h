// What the two directions of an exchange tell each other.
#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>

#include "Failure.h"

namespace VelSockCat {

// An exchange ends with the first failure of either direction; the other one's follows from it.
// Without one it ends when the receiver has reached the end of the peer's bytes and the sender has
// nothing in hand: it has ended too, or it waits for input that may never come. Used by the
// sending, the receiving and the waiting thread at the same time.
class Progress {
public:
    // Around a read of the input that may take for ever. SenderResumes returns false when the
    // exchange has ended in the meantime: the socket is then the waiting thread's.
    void SenderWaits();
    bool SenderResumes();

    // Without a failure: the input, or the peer's bytes, came to their end.
    void SenderEnds(const std::optional<VelSockTools::Failure>& failure);
    void ReceiverEnds(const std::optional<VelSockTools::Failure>& failure);

    // The state in which the exchange ended. A thread that waits for input will leave the socket
    // alone.
    struct Ending {
        std::optional<VelSockTools::Failure> failure;
        bool bothThreadsHaveEnded;
        bool socketIsUnused;
    };
    Ending WaitForEnding();

private:
    enum class Sender { Busy, Waiting, Ended };

    void KeepFirst(const std::optional<VelSockTools::Failure>& failure);
    bool HasEnded() const;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<VelSockTools::Failure> failure_;
    Sender sender_ = Sender::Busy;
    bool receiverHasEnded_ = false;
};

}  // namespace VelSockCat

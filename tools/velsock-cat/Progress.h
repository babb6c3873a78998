// Coordinates the two directions of an exchange.
#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>

#include "Failure.h"

namespace VelSockCat {

// An exchange ends with the first failure of either direction; a failure of the other is a
// consequence. Without a failure it ends when the receiver has reached the end of the peer's bytes
// and the sender has no bytes left to send: it has ended too, or it waits for input that may never
// come. Used by the sending, the receiving and the waiting thread at the same time.
class Progress {
public:
    // Around a read of the input that may block for ever. SenderResumes returns false if the
    // exchange has ended in the meantime: the socket then belongs to the waiting thread.
    void SenderWaits();
    bool SenderResumes();

    // Without a failure, the input or the peer's bytes have ended.
    void SenderEnds(const std::optional<VelSockTools::Failure>& failure);
    void ReceiverEnds(const std::optional<VelSockTools::Failure>& failure);

    // The state in which the exchange ended. A thread that waits for input will not use the socket
    // any more.
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

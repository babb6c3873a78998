// Coordinates the two directions of an exchange.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

#include "Failure.h"

namespace VelSockCat {

// An exchange ends with the first failure of either direction; a failure of the other is a
// consequence. Without a failure it ends when the receiver has reached the end of the peer's bytes
// and the sender has no bytes left to send: it has ended too, or, unless the whole input is to be
// sent, it waits for input that may never come. Used by the sending, the receiving and the waiting
// thread at the same time.
class Progress {
public:
    using Clock = std::chrono::steady_clock;

    explicit Progress(bool sendsWholeInput) : sendsWholeInput_(sendsWholeInput) {}

    // Around a read of the input that may block for ever. SenderResumes returns false if the
    // exchange has ended in the meantime: the socket then belongs to the waiting thread.
    void SenderWaits();
    bool SenderResumes();

    // Without a failure, the input or the peer's bytes have ended.
    void SenderEnds(const std::optional<VelSockTools::Failure>& failure);
    void ReceiverEnds(const std::optional<VelSockTools::Failure>& failure);

    // Bytes have come.
    void ReceiverGoesOn();

    // The state of the exchange. A thread that waits for input will not use the socket any more
    // when the exchange has ended.
    struct State {
        std::optional<VelSockTools::Failure> failure;
        bool hasEnded;
        bool bothThreadsHaveEnded;
        bool senderUsesSocket;
    };

    // Wait until the exchange has ended, or at least the sender.
    State AwaitSender();
    // Wait until the exchange has ended, or at most until that moment.
    State AwaitEndUntil(Clock::time_point moment);
    // Wait until the exchange has ended, or nothing has come for so long, counted from now or from
    // the last bytes.
    State AwaitEndOrSilence(Clock::duration silence);
    State AwaitEnd();

private:
    enum class Sender { Busy, Waiting, Ended };

    void KeepFirst(const std::optional<VelSockTools::Failure>& failure);
    bool HasEnded() const;
    State CurrentState() const;

    const bool sendsWholeInput_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<VelSockTools::Failure> failure_;
    Sender sender_ = Sender::Busy;
    bool receiverHasEnded_ = false;
    Clock::time_point lastBytes_ = Clock::now();
};

}  // namespace VelSockCat

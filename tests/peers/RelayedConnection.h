// One client and its server, with what they say to each other passed on in both directions.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelNet/SocketXt.h>

#include <atomic>
#include <exception>
#include <mutex>

namespace Peers {

// What a relay has seen so far, of all its connections.
struct Totals {
    std::atomic<unsigned long long> connections = 0;
    std::atomic<unsigned long long> refused = 0;    // the server was not reached
    std::atomic<unsigned long long> lost = 0;       // ended by a reset or an abort
    std::atomic<unsigned long long> surprises = 0;  // ended by a failure that is none of these
    std::atomic<unsigned long long> questions = 0;  // bytes for the server
    std::atomic<unsigned long long> answers = 0;    // bytes for the client
};

// The library cannot end one direction alone. The server's end is passed on at once. The client's
// is passed on when the server, which may still have something to say, has been silent for a while.
class RelayedConnection {
public:
    using SocketOwner = VelBase::ReturnPtrI<VelNet::SocketXt>;

    RelayedConnection(SocketOwner client, SocketOwner server, Totals& totals);

    // Passes on until both directions are over; takes a second thread for that.
    void Run();

    // Makes Run return. May be called by any thread, any number of times.
    void End();

private:
    enum class Outcome { Passed, Silence, End };
    using Count = std::atomic<unsigned long long>;

    void PassQuestions();
    void PassAnswers();
    template <class Direction>
    void UntilFailure(Direction direction) noexcept;
    void Judge(const VelNet::Exception& failure) noexcept;
    void BeSurprisedBy(const char* text) noexcept;
    static Outcome PassSome(VelNet::SocketXt& from, VelNet::SocketXt& to, Count& count);

    SocketOwner client_;
    SocketOwner server_;
    Totals& totals_;
    std::atomic<bool> clientHasEnded_ = false;
    std::atomic<bool> isJudged_ = false;
    std::once_flag ending_;
};

}  // namespace Peers

#include "Ending.h"

#include <VelNet/SocketXt.h>

#include <chrono>
#include <string>
#include <utility>

#include "Failure.h"
#include "SystemNetwork.h"

namespace VelSockCat {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using State = Progress::State;

// A peer that answers within this time is not disturbed by the end of our direction: some take
// that for the end of the connection.
constexpr milliseconds PatienceBeforeEnd = seconds(5);

// What the peer has sent before it could know of our end is read before a classic socket is closed:
// unread bytes would make the system reset the connection.
constexpr milliseconds PatienceBeforeClose(200);

constexpr milliseconds PatienceAfterEnd = seconds(60);

bool EndsAtOnce(const Arguments& arguments) {
    return arguments.endsWithInput || arguments.direction == Direction::SendOnly;
}

// Returns whether the peer has been told that no more bytes will come.
bool TellPeer(const VelNet::Socket& socket) {
    const auto* const extended = dynamic_cast<const VelNet::SocketXt*>(&socket);
    return extended != nullptr && VelSockTools::EndSending(*extended);
}

milliseconds LimitAfterEnd(const Arguments& arguments) {
    const unsigned int limit = arguments.receiveTimeout.value_or(0);
    return limit == 0 ? PatienceAfterEnd : milliseconds(limit);
}

State GivenUp(State state, milliseconds limit) {
    using VelSockTools::ExitCode;
    const std::string text = "the peer has neither sent anything nor ended the connection for " +
                             std::to_string(limit.count()) + " ms after the end of the input";
    state.failure.emplace(ExitCode::TimedOut, text);
    return state;
}

State AwaitOwnTime(Progress& progress, const VelNet::Socket& socket, const Arguments& arguments) {
    if (EndsAtOnce(arguments)) TellPeer(socket);
    if (arguments.quitAfter->forever) return progress.AwaitEnd();
    return progress.AwaitEndUntil(Progress::Clock::now() +
                                  milliseconds(arguments.quitAfter->milliseconds));
}

State AwaitPeer(Progress& progress, const VelNet::Socket& socket, const Arguments& arguments) {
    if (!EndsAtOnce(arguments)) {
        State state = progress.AwaitEndOrSilence(PatienceBeforeEnd);
        if (state.hasEnded) return state;
    }
    if (!TellPeer(socket)) return progress.AwaitEndOrSilence(PatienceBeforeClose);
    const milliseconds limit = LimitAfterEnd(arguments);
    State state = progress.AwaitEndOrSilence(limit);
    return state.hasEnded ? state : GivenUp(std::move(state), limit);
}

}  // namespace

State AwaitEnding(Progress& progress, const VelNet::Socket& socket, const Arguments& arguments) {
    State state = progress.AwaitSender();
    if (state.hasEnded) return state;
    return arguments.quitAfter ? AwaitOwnTime(progress, socket, arguments)
                               : AwaitPeer(progress, socket, arguments);
}

}  // namespace VelSockCat

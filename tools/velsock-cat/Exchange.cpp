#include "Exchange.h"

#include <cstdlib>
#include <thread>

#include "Ending.h"
#include "Events.h"
#include "Failure.h"
#include "Progress.h"
#include "ProgressLine.h"
#include "StandardStreams.h"
#include "Streams.h"

namespace VelSockCat {

namespace {

using VelSockTools::ExitCode;
using VelSockTools::Failure;

void SendInput(VelNet::Socket& socket, Progress& progress, Traffic& traffic,
               const std::optional<unsigned int>& rate) {
    Block block;
    Pace pace(rate);
    for (;;) {
        if (!VelSockTools::InputIsReady()) progress.SenderWaits();
        const std::size_t count = VelSockTools::ReadInput(block.data(), block.size());
        if (count == 0 || !progress.SenderResumes()) return;
        SendAll(socket, {block.data(), count}, pace, traffic);
    }
}

// Bytes that are not wanted are read all the same: unread ones would make the system reset the
// connection when it is closed.
void ReceiveBytes(VelNet::Socket& socket, Progress& progress, Traffic& traffic, bool areWanted) {
    Block block;
    while (const std::size_t count = ReceiveSome(socket, block)) {
        progress.ReceiverGoesOn();
        traffic.Received({block.data(), count});
        if (areWanted && !traffic.ShowsBytes()) VelSockTools::WriteOutput({block.data(), count});
    }
}

void ReceiveOnly(VelNet::Socket& socket, Traffic& traffic) {
    Progress nobodyWaits(false);
    ReceiveBytes(socket, nobodyWaits, traffic, true);
}

template <class Work>
std::optional<Failure> FailureOf(const Work& work) {
    try {
        work();
        return {};
    } catch (const Failure& failure) {
        return failure;
    } catch (const std::exception& exception) {
        return Failure(ExitCode::LocalFailure, exception.what());
    }
}

// An extended socket has logged what it throws here; the process ends anyway.
void Close(VelNet::Socket& socket) {
    try {
        socket.Close();
    } catch (const VelNet::Exception&) {
        return;
    }
}

// One thread may still be blocked in a read of standard input or in a transfer, which nothing can
// interrupt, and uses what unwinding would destroy. So the process exits immediately; nothing is
// buffered that could be lost.
[[noreturn]] void EndProcess(VelNet::Socket& socket, const Progress::State& state,
                             ProgressLine& line, Traffic& traffic) {
    if (!state.senderUsesSocket) Close(socket);
    line.Stop();
    traffic.End();
    const ExitCode code = state.failure ? Report("velsock-cat", *state.failure) : ExitCode::InOrder;
    std::_Exit(static_cast<int>(code));
}

void ExchangeBothWays(VelNet::Socket& socket, const Arguments& arguments, Traffic& traffic,
                      ProgressLine& line) {
    const bool sendOnly = arguments.direction == Direction::SendOnly;
    Progress progress(sendOnly);
    std::thread sender([&] {
        progress.SenderEnds(
            FailureOf([&] { SendInput(socket, progress, traffic, arguments.rate); }));
    });
    std::thread receiver([&] {
        progress.ReceiverEnds(
            FailureOf([&] { ReceiveBytes(socket, progress, traffic, !sendOnly); }));
    });
    const Progress::State state = AwaitEnding(progress, socket, arguments);
    if (!state.bothThreadsHaveEnded) EndProcess(socket, state, line, traffic);
    sender.join();
    receiver.join();
    if (state.failure) throw Failure(*state.failure);
}

}  // namespace

void Exchange(VelNet::Socket& socket, const Arguments& arguments, Traffic& traffic) {
    ProgressLine line(traffic, arguments);
    if (arguments.direction == Direction::ReceiveOnly) return ReceiveOnly(socket, traffic);
    ExchangeBothWays(socket, arguments, traffic, line);
}

}  // namespace VelSockCat

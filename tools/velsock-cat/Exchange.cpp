#include "Exchange.h"

#include <VelCompanion/Transfers.h>

#include <array>
#include <cstdlib>
#include <string_view>
#include <thread>

#include "Ending.h"
#include "Failure.h"
#include "Progress.h"
#include "StandardStreams.h"
#include "Transfer.h"

namespace VelSockCat {

namespace {

using Block = std::array<char, 65536>;

using VelSockTools::ExitCode;
using VelSockTools::Failure;

void SendAll(VelNet::Socket& socket, std::string_view bytes) {
    try {
        VelCompanion::SendAll(socket, bytes);
    } catch (const VelNet::Exception& exception) {
        throw TransferFailure("cannot send to the peer", exception);
    }
}

// Returns the number of bytes, or 0 if the peer has closed the connection.
std::size_t ReceiveSome(VelNet::Socket& socket, Block& block) {
    try {
        return VelCompanion::ReceiveSome(socket, block.data(), block.size());
    } catch (const VelNet::Exception& exception) {
        throw TransferFailure("cannot receive from the peer", exception);
    }
}

void SendInput(VelNet::Socket& socket, Progress& progress) {
    Block block;
    for (;;) {
        if (!VelSockTools::InputIsReady()) progress.SenderWaits();
        const std::size_t count = VelSockTools::ReadInput(block.data(), block.size());
        if (count == 0 || !progress.SenderResumes()) return;
        SendAll(socket, {block.data(), count});
    }
}

// Bytes that are not wanted are read all the same: unread ones would make the system reset the
// connection when it is closed.
void ReceiveBytes(VelNet::Socket& socket, Progress& progress, bool areWanted) {
    Block block;
    while (const std::size_t count = ReceiveSome(socket, block)) {
        progress.ReceiverGoesOn();
        if (areWanted) VelSockTools::WriteOutput({block.data(), count});
    }
}

void ReceiveOnly(VelNet::Socket& socket) {
    Progress nobodyWaits(false);
    ReceiveBytes(socket, nobodyWaits, true);
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
[[noreturn]] void EndProcess(VelNet::Socket& socket, const Progress::State& state) {
    if (!state.senderUsesSocket) Close(socket);
    const ExitCode code = state.failure ? Report("velsock-cat", *state.failure) : ExitCode::InOrder;
    std::_Exit(static_cast<int>(code));
}

void ExchangeBothWays(VelNet::Socket& socket, const Arguments& arguments) {
    const bool sendOnly = arguments.direction == Direction::SendOnly;
    Progress progress(sendOnly);
    std::thread sender(
        [&] { progress.SenderEnds(FailureOf([&] { SendInput(socket, progress); })); });
    std::thread receiver([&] {
        progress.ReceiverEnds(FailureOf([&] { ReceiveBytes(socket, progress, !sendOnly); }));
    });
    const Progress::State state = AwaitEnding(progress, socket, arguments);
    if (!state.bothThreadsHaveEnded) EndProcess(socket, state);
    sender.join();
    receiver.join();
    if (state.failure) throw Failure(*state.failure);
}

}  // namespace

void Exchange(VelNet::Socket& socket, const Arguments& arguments) {
    if (arguments.direction == Direction::ReceiveOnly) return ReceiveOnly(socket);
    ExchangeBothWays(socket, arguments);
}

}  // namespace VelSockCat

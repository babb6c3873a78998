#include "Exchange.h"

#include <array>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <thread>

#include "Failure.h"
#include "Progress.h"
#include "StandardStreams.h"
#include "Transfer.h"

namespace VelSockCat {

namespace {

constexpr int BlockSize = 65536;
using Block = std::array<char, BlockSize>;

using VelSockTools::ExitCode;
using VelSockTools::Failure;

int SendSome(VelNet::Socket& socket, std::string_view bytes) {
    try {
        return socket.Send(bytes.data(), static_cast<int>(bytes.size()));
    } catch (const VelNet::Exception& exception) {
        throw TransferFailure(exception);
    }
}

// The system may accept a part of the bytes, or none if its buffer is full.
void SendAll(VelNet::Socket& socket, std::string_view bytes) {
    constexpr std::chrono::milliseconds pauseWithoutRoom{1};
    while (!bytes.empty()) {
        const int sent = SendSome(socket, bytes);
        if (sent == 0) std::this_thread::sleep_for(pauseWithoutRoom);
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

// Returns the number of bytes, or 0 if the peer has closed the connection.
std::size_t ReceiveSome(VelNet::Socket& socket, Block& block) {
    try {
        return static_cast<std::size_t>(socket.Receive(block.data(), BlockSize));
    } catch (const VelNet::Exception& exception) {
        if (IsNothingReceived(exception)) return 0;
        throw TransferFailure(exception);
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

void ReceiveToOutput(VelNet::Socket& socket) {
    Block block;
    while (const std::size_t count = ReceiveSome(socket, block))
        VelSockTools::WriteOutput({block.data(), count});
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
[[noreturn]] void EndProcess(VelNet::Socket& socket, const Progress::Ending& ending) {
    if (ending.socketIsUnused) Close(socket);
    const ExitCode code =
        ending.failure ? Report("velsock-cat", *ending.failure) : ExitCode::InOrder;
    std::_Exit(static_cast<int>(code));
}

void ExchangeBothWays(VelNet::Socket& socket) {
    Progress progress;
    std::thread sender(
        [&] { progress.SenderEnds(FailureOf([&] { SendInput(socket, progress); })); });
    std::thread receiver(
        [&] { progress.ReceiverEnds(FailureOf([&] { ReceiveToOutput(socket); })); });
    const Progress::Ending ending = progress.WaitForEnding();
    if (!ending.bothThreadsHaveEnded) EndProcess(socket, ending);
    sender.join();
    receiver.join();
    if (ending.failure) throw Failure(*ending.failure);
}

void SendOnly(VelNet::Socket& socket) {
    Progress progress;
    SendInput(socket, progress);
}

}  // namespace

void Exchange(VelNet::Socket& socket, Direction direction) {
    switch (direction) {
        case Direction::Both:
            return ExchangeBothWays(socket);
        case Direction::SendOnly:
            return SendOnly(socket);
        case Direction::ReceiveOnly:
            return ReceiveToOutput(socket);
    }
}

}  // namespace VelSockCat

#include <VelCompanion/Pairs.h>
#include <VelCompanion/Transfers.h>
#include <VelNet/SocketInitialization.h>

#include <atomic>
#include <future>
#include <new>

#include "storms/posix/Storms.h"
#include "support/FailingAllocations.h"

namespace Storms {

namespace {

constexpr unsigned int LongestCase = 3'000;  // seconds

// Whether the layer can be used. A layer without memory for its state counts, and is down.
bool IsLayerUp() {
    try {
        VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    } catch (const VelNet::Exception& failure) {
        if (failure.GetErrorCode() != VelNet::SOCKET_ERR_NOTINITIALISED) throw;
        return false;
    }
    return true;
}

// Starts the layer and ends it, with no memory after so many allocations. Returns whether that was
// enough.
bool StartsWithMemoryFor(unsigned int allocations) {
    const Support::FailingAllocations failing(allocations);
    try {
        const VelNet::SocketInitialization layer;
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

// Returns how many start-ups have failed. Each third may; each eighth is for a socket.
std::size_t StartAndEnd(std::size_t startUps) {
    std::size_t failed = 0;
    for (std::size_t time = 0; time < startUps; ++time) {
        if (time % 3 == 2) {
            if (!StartsWithMemoryFor(static_cast<unsigned int>(time / 3 % 8))) ++failed;
            continue;
        }
        const VelNet::SocketInitialization layer;
        if (time % 8 == 0) static_cast<void>(IsLayerUp());
    }
    return failed;
}

std::string Afterwards() {
    if (IsLayerUp()) return "the layer is up after all have ended it";
    const VelNet::SocketInitialization layer;
    const VelCompanion::SocketPair pair = VelCompanion::MakeSocketPair();
    VelCompanion::SendAll(*pair.first, "hello");
    const bool whole = VelCompanion::ReceiveExactly(*pair.second, 5) == "hello";
    return whole ? "" : "other bytes arrive after it";
}

}  // namespace

// First without other threads, which might keep the layer up, so that memory is wanted.
Totals StartUpsInThreads(std::size_t threads, std::size_t startUps) {
    constexpr std::size_t Alone = 24;
    Totals totals = {.cases = 1, .startUps = Alone + threads * startUps, .threads = threads};
    const Bounded bounded(LongestCase);
    totals.failedStartUps = StartAndEnd(Alone);
    std::vector<std::future<std::size_t>> running;
    for (std::size_t thread = 0; thread < threads; ++thread)
        running.push_back(std::async(std::launch::async, StartAndEnd, startUps));
    try {
        for (auto& thread : running)
            totals.failedStartUps += thread.get();
        if (const std::string wrong = Afterwards(); !wrong.empty())
            totals.failures.push_back("start-ups: " + wrong);
    } catch (...) {
        totals.failures.push_back("start-ups: " + TextOfException());
    }
    return totals;
}

}  // namespace Storms

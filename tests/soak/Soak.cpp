// Uses the library the way a busy server does, round after round, and measures after each whether
// the process has grown: bytes allocated, resident memory, descriptors. What a round does follows
// from the seed.
// usage: soak SECONDS [SEED [block|descriptor]]   the last keeps one of these each round, which
// must
//                                                 be noticed
#include <VelCompanion/Errors.h>
#include <VelNet/SocketInitialization.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <span>
#include <string_view>

#include "Clients.h"
#include "Trend.h"
#include "Usage.h"
#include "support/TemporaryFolder.h"

namespace {

using namespace Soak;
using Clock = std::chrono::steady_clock;

constexpr std::size_t Threads = 4;
constexpr std::size_t ClientsPerThread = 50;
constexpr std::size_t StepsPerRound = 400;
constexpr std::size_t FewestRounds = 8;

// The heap's own bookkeeping changes by some hundred bytes. Over the rounds of a few minutes this
// is less than the smallest block a round.
constexpr double AllowedBytes = 8 * 1024;
constexpr double AllowedDescriptors = 0.5;
constexpr double AllowedResidentBytes = 2 * 1024 * 1024;
// How long it takes until all parts of the heap have been as large as they ever are.
constexpr double ResidentMemorySettles = 60;

struct Options {
    double seconds = 0;
    std::uint64_t seed = 1;
    std::string_view leak;
};

std::uint64_t SeedOf(const Options& options, std::size_t round, std::size_t thread) {
    return options.seed * 1'000'003 + round * Threads + thread;
}

// A thread's work; what it throws comes out of the future.
Work RunClients(std::uint64_t seed, Trace& trace) {
    Clients clients(seed, ClientsPerThread, trace);
    clients.Run(StepsPerRound);
    return clients.Done();
}

Work RunRound(const Options& options, std::size_t round, const Support::TemporaryFolder& folder) {
    Trace trace(folder.Path());
    std::array<std::future<Work>, Threads> threads;
    for (std::size_t thread = 0; thread < Threads; ++thread)
        threads[thread] = std::async(std::launch::async, RunClients, SeedOf(options, round, thread),
                                     std::ref(trace));
    Work work;
    for (auto& thread : threads)
        work.Add(thread.get());
    return work;
}

// The planted leaks.
void Keep(std::string_view leak) {
    static std::vector<std::string>* const blocks = new std::vector<std::string>;
    static std::vector<VelBase::ReturnPtrI<VelNet::Socket>> sockets;
    if (leak == "block") blocks->emplace_back(4096, 'x');
    if (leak == "descriptor")
        sockets.push_back(
            VelNet::CreateSocket(VelNet::Socket::SOCKET_DATAGRAM, VelNet::Socket::PROTOCOL_UDP));
}

struct Trends {
    Trend allocated = Trend("bytes allocated", AllowedBytes);
    Trend descriptors = Trend("descriptors", AllowedDescriptors);
    Trend resident = Trend("resident bytes", AllowedResidentBytes);

    void Add(const Usage& usage) {
        allocated.Add(usage.allocatedBytes);
        descriptors.Add(usage.descriptors);
        resident.Add(usage.residentBytes);
    }

    // Prints them, and tells whether one rises that may not.
    bool Report(double seconds) const {
        for (const Trend* const trend : {&allocated, &descriptors, &resident})
            std::printf("%s\n", trend->Report().c_str());
        const bool settled = seconds > 2 * ResidentMemorySettles;
        if (!settled) std::printf("resident memory is judged after longer runs only\n");
        return allocated.Rises() || descriptors.Rises() || (settled && resident.Rises());
    }
};

void Print(std::size_t rounds, const Work& work, double seconds) {
    std::printf(
        "%zu rounds in %.0f s: %zu connections, %zu transfers of %zu bytes, %zu closes, %zu "
        "names\n",
        rounds, seconds, work.connections, work.transfers, work.bytes, work.closes, work.names);
}

int Run(const Options& options) {
    const VelNet::SocketInitialization layer;
    const Support::TemporaryFolder folder;
    const Clock::time_point begin = Clock::now();
    const auto elapsed = [&] {
        return std::chrono::duration<double>(Clock::now() - begin).count();
    };
    Trends trends;
    Work work;
    std::size_t rounds = 0;
    for (; rounds < FewestRounds || elapsed() < options.seconds; ++rounds) {
        work.Add(RunRound(options, rounds, folder));
        Keep(options.leak);
        trends.Add(CurrentUsage());
    }
    Print(rounds, work, elapsed());
    return trends.Report(elapsed()) ? 1 : 0;
}

Options OptionsFrom(std::span<char*> arguments) {
    Options options;
    if (arguments.size() > 1) options.seconds = std::strtod(arguments[1], nullptr);
    if (arguments.size() > 2) options.seed = std::strtoull(arguments[2], nullptr, 10);
    if (arguments.size() > 3) options.leak = arguments[3];
    return options;
}

}  // namespace

int main(int count, char** arguments) try {
    const Options options = OptionsFrom({arguments, static_cast<std::size_t>(count)});
    std::printf("seed %llu: %zu threads with %zu connections each\n",
                static_cast<unsigned long long>(options.seed), Threads, ClientsPerThread);
    return Run(options);
} catch (const std::exception& failure) {
    std::printf("%s\n", failure.what());
    return 2;
} catch (...) {
    std::printf("%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 2;
}

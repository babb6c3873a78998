#include <VelNet/SocketInitialization.h>

#include <atomic>
#include <future>
#include <random>

#include "soak/Clients.h"
#include "soak/Usage.h"
#include "storms/posix/Storms.h"
#include "support/TemporaryFolder.h"
#include "support/posix/HelperThread.h"

namespace Storms {

namespace {

constexpr unsigned int LongestCase = 1'200;  // seconds
constexpr std::size_t ConnectionsPerThread = 4;

// A thread's work. Returns what is wrong.
std::string UseSockets(std::size_t seed, std::size_t steps, Soak::Trace& trace) try {
    Soak::Clients clients(seed, ConnectionsPerThread, trace);
    clients.Run(steps);
    return {};
} catch (...) {
    return TextOfException();
}

// Until it is to stop.
void SwitchAlways(const std::stop_token& stop, Soak::Trace& trace) {
    for (Soak::Random random(1); !stop.stop_requested();)
        trace.Change(random);
}

std::vector<std::string> Switched(std::size_t threads, std::size_t steps) {
    const VelNet::SocketInitialization layer;
    const Support::TemporaryFolder folder;
    Soak::Trace trace(folder.Path());
    const Support::HelperThread switching(
        [&](const std::stop_token& stop) { SwitchAlways(stop, trace); });
    std::vector<std::future<std::string>> running;
    for (std::size_t thread = 0; thread < threads; ++thread)
        running.push_back(
            std::async(std::launch::async, UseSockets, thread, steps, std::ref(trace)));
    std::vector<std::string> failures;
    for (auto& thread : running) {
        if (const std::string wrong = thread.get(); !wrong.empty())
            failures.push_back("switched logs: " + wrong);
    }
    return failures;
}

}  // namespace

Totals SwitchedLogs(std::size_t threads, std::size_t steps) {
    const Bounded bounded(LongestCase);
    Totals totals = {.cases = 1, .threads = threads + 1};
    const double before = Soak::CurrentUsage().descriptors;
    totals.failures = Switched(threads, steps);
    const double after = Soak::CurrentUsage().descriptors;
    if (after != before)
        totals.failures.push_back("switched logs: " + std::to_string(after - before) +
                                  " descriptors are left over");
    return totals;
}

}  // namespace Storms

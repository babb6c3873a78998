// All storms at length: storm_campaign [BYTES [START_UPS [STEPS [ROUNDS]]]], each of a thread.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <span>

#include "storms/posix/Storms.h"

namespace {

using namespace Storms;

Totals Tell(const Totals& totals) {
    std::printf("%s\n", LineOf(totals).c_str());
    for (const std::string& failure : totals.failures)
        std::printf("  %s\n", failure.c_str());
    std::fflush(stdout);
    return totals;
}

std::size_t NumberOr(std::span<char*> words, std::size_t place, std::size_t usual) {
    return words.size() > place ? std::strtoull(words[place], nullptr, 10) : usual;
}

}  // namespace

int main(int count, char** arguments) try {
    const std::span<char*> words(arguments, static_cast<std::size_t>(count));
    Totals totals;
    for (const unsigned int perSecond : {1'000U, 3'000U, 10'000U}) {
        for (const bool restarts : {false, true}) {
            totals.Add(Tell(
                TransfersUnderSignals({perSecond, restarts}, NumberOr(words, 1, 200'000'000))));
            totals.Add(Tell(WaitsUnderSignals({perSecond, restarts}, std::chrono::seconds(60))));
        }
    }
    // Of few threads each may find the layer down, and its memory gone.
    for (const std::size_t threads : {64U, 2U})
        totals.Add(Tell(StartUpsInThreads(threads, NumberOr(words, 2, 100'000))));
    for (std::size_t round = 0; round < NumberOr(words, 4, 5); ++round)
        totals.Add(Tell(SwitchedLogs(32, NumberOr(words, 3, 1'000))));
    std::printf("%s\n", LineOf(totals).c_str());
    return totals.failures.empty() ? 0 : 1;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "storm_campaign: %s\n", failure.what());
    return 2;
}

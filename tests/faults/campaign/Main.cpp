// Plays every scene with every fault, and prints what became of it: fault_campaign
// [--quick] [--stage system-calls|allocations|cancellations|forks|descriptors|signals]... [--scene
// NAME].
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string_view>
#include <vector>

#include "faults/posix/Campaign.h"
#include "faults/posix/ErrorNumbers.h"

namespace {

using namespace Faults;

struct Request {
    Effort effort = {.all = true};
    std::vector<std::string_view> stages;  // none: all
    const char* scene = nullptr;
};

bool IsMeant(const char* asked, const char* name) {
    return asked == nullptr || std::strcmp(asked, name) == 0;
}

bool IsMeant(const std::vector<std::string_view>& asked, const char* name) {
    return asked.empty() || std::find(asked.begin(), asked.end(), name) != asked.end();
}

Request Read(char** words) {
    Request request;
    for (; *words != nullptr; ++words) {
        const std::string_view word = *words;
        if (word == "--quick") request.effort.all = false;
        if (word == "--stage" && words[1] != nullptr) request.stages.emplace_back(*++words);
        if (word == "--scene" && words[1] != nullptr) request.scene = *++words;
    }
    return request;
}

Totals PlayAndTell(const Scene& scene, Stage stage, const Effort& effort) {
    Totals totals = PlayWithFaults(scene, stage, effort);
    for (const std::string& failure : totals.failures)
        std::printf("  %s\n", failure.c_str());
    std::fflush(stdout);
    return totals;
}

struct NamedStage {
    Stage stage;
    const char* name;
    const char* what;
};

constexpr NamedStage Stages[] = {
    {Stage::SystemCalls, "system-calls", "system-call faults"},
    {Stage::Allocations, "allocations", "allocation faults"},
    {Stage::Cancellations, "cancellations", "cancelled threads"},
    {Stage::Forks, "forks", "forks"},
    {Stage::Descriptors, "descriptors", "closed streams, high numbers and exhaustion"},
    {Stage::Signals, "signals", "signals"},
};

std::size_t Play(const Request& request, const NamedStage& stage) {
    if (!IsMeant(request.stages, stage.name)) return 0;
    Totals totals;
    for (const Scene& scene : Scenes()) {
        if (IsMeant(request.scene, scene.name))
            totals.Add(PlayAndTell(scene, stage.stage, request.effort));
    }
    std::printf("%s\n", LineOf(totals, stage.what).c_str());
    return totals.failures.size();
}

}  // namespace

int main(int, char** words) try {
    if (!PrepareSurroundings()) {
        std::fputs("fault_campaign: the system lets no network of its own be made\n", stderr);
        return 2;
    }
    const Request request = Read(words + 1);
    std::size_t failures = 0;
    for (const NamedStage& stage : Stages)
        failures += Play(request, stage);
    return failures == 0 ? 0 : 1;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "fault_campaign: %s\n", failure.what());
    return 2;
}

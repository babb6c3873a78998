// Plays every scene with every fault, and prints what became of it: fault_campaign
// [--quick] [--stage system-calls|allocations] [--scene NAME].
#include <cstdio>
#include <cstring>
#include <exception>
#include <string_view>

#include "faults/posix/Campaign.h"
#include "faults/posix/ErrorNumbers.h"

namespace {

using namespace Faults;

struct Request {
    Effort effort = {.all = true};
    const char* stage = nullptr;
    const char* scene = nullptr;
};

bool IsMeant(const char* asked, const char* name) {
    return asked == nullptr || std::strcmp(asked, name) == 0;
}

Request Read(char** words) {
    Request request;
    for (; *words != nullptr; ++words) {
        const std::string_view word = *words;
        if (word == "--quick") request.effort.all = false;
        if (word == "--stage" && words[1] != nullptr) request.stage = *++words;
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

std::size_t Play(const Request& request, Stage stage, const char* name, const char* what) {
    if (!IsMeant(request.stage, name)) return 0;
    Totals totals;
    for (const Scene& scene : Scenes()) {
        if (IsMeant(request.scene, scene.name))
            totals.Add(PlayAndTell(scene, stage, request.effort));
    }
    std::printf("%s\n", LineOf(totals, what).c_str());
    return totals.failures.size();
}

}  // namespace

int main(int, char** words) try {
    if (!PrepareSurroundings()) {
        std::fputs("fault_campaign: the system lets no network of its own be made\n", stderr);
        return 2;
    }
    const Request request = Read(words + 1);
    const std::size_t failures =
        Play(request, Stage::SystemCalls, "system-calls", "system-call faults") +
        Play(request, Stage::Allocations, "allocations", "allocation faults");
    return failures == 0 ? 0 : 1;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "fault_campaign: %s\n", failure.what());
    return 2;
}

// Plays scenes with one fault after the other, in processes of their own, and holds each case
// against what may happen.
//
// A case passes if the scene completes, or ends with one of the library's exceptions, or with
// std::bad_alloc, or is cancelled, where the fault is a reason for that; if the process then has
// the descriptors, bytes, threads, keys, start-ups and the sink that it had before; and if a run
// without a fault has its usual result. A case that crashes, or that a minute does not end, ends
// its process and counts as failed.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "faults/posix/Injector.h"
#include "faults/scenes/Scene.h"

namespace Faults {

// Cancellations: the thread is cancelled before each call. Forks: the process forks before each
// call that may be cancelled; the child leaves the scene there, which ends all that it shares with
// its parent, and plays it anew. Descriptors: standard streams are closed, low numbers are taken,
// no more than so many are left. Signals: each a scene may get thousands a second.
enum class Stage { SystemCalls, Allocations, Cancellations, Forks, Descriptors, Signals };

// Faults of the tests' own, to see that they are seen. Each happens when the case's fault strikes.
enum class Planted { Nothing, Descriptor, Memory, Key, StartUp, Thread, Sink, Exception, Crash };

struct Effort {
    bool all = false;  // else the quick cut
    Planted planted = Planted::Nothing;
};

struct Totals {
    unsigned int cases = 0;
    unsigned int completed = 0;
    unsigned int exceptions = 0;
    unsigned int outOfMemory = 0;
    unsigned int cancelled = 0;
    unsigned long long signals = 0;
    std::vector<std::string> failures;

    void Add(const Totals& more);
};

// With the log's records and without.
Totals PlayWithFaults(const Scene& scene, Stage stage, const Effort& effort);
Totals PlayWithFaults(std::span<const Scene> scenes, Stage stage, const Effort& effort);

// The calls that a scene's runs make, the first run's included, by the functions' symbols.
std::vector<std::string> FunctionsOf(const Scene& scene);

// The network, the settings and the limits that the scenes need, for this process and those that it
// starts. False where the system does not allow that.
bool PrepareSurroundings();

std::string LineOf(const Totals& totals, const char* what);

}  // namespace Faults

#include "Counting.h"

#include <cstdio>
#include <stdexcept>
#include <string>

#include "Counters.h"
#include "FailureReason.h"
#include "Marks.h"

namespace Bench {
namespace {

// First uses bind symbols, fill caches and size buffers once and for all.
void WarmUp(Work& work, int runs) {
    for (int run = 0; run < runs; ++run) {
        work.Prepare();
        work.Run();
        work.Restore();
    }
}

Counters CountMeasuredSpan(const Case& measured, Work& work) {
    const MeasuredSpan span(measured);
    const Counters begin = CountedSoFar();
    work.Run();
    return CountedSoFar() - begin;
}

Counters CountRun(const Case& measured, Work& work) {
    work.Prepare();
    const Counters counted = CountMeasuredSpan(measured, work);
    work.Restore();
    return counted;
}

void Print(const Case& measured, const char* counter, double value) {
    std::printf("%s %s %s %.4f\n", measured.row.c_str(), measured.subject.c_str(), counter, value);
}

void CountCase(const Case& measured, const Runs& runs) {
    const auto work = measured.make();
    WarmUp(*work, runs.warmUp);
    Counters sum;
    for (int run = 0; run < runs.measured; ++run)
        sum += CountRun(measured, *work);
    WriteInstructions(measured);
    const double operations = static_cast<double>(runs.measured) * measured.operations;
    Print(measured, "operations", operations);
    Print(measured, "allocations", static_cast<double>(sum.allocations) / operations);
    Print(measured, "locks", static_cast<double>(sum.locks) / operations);
}

std::runtime_error FailureOf(const Case& measured, const std::string& reason) {
    return std::runtime_error(measured.row + " " + measured.subject + ": " + reason);
}

}  // namespace

void CountCases(const Cases& cases, const Runs& runs) {
    for (const Case& measured : cases) {
        try {
            CountCase(measured, runs);
        } catch (...) {
            throw FailureOf(measured, FailureReason());
        }
    }
    // The cases and their texts were allocated by then.
    if (CountedSoFar().allocations == 0) throw std::runtime_error("allocations are not counted");
}

}  // namespace Bench

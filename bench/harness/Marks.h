// Marks that tell instruction counters and tracers which part of a run is the measured one.
#pragma once

#include "Work.h"

namespace Bench {

// From its making to its end instructions and system calls belong to the case. callgrind is to be
// started with --collect-atstart=no; a tracer sees a call of access with the words "bench begin ROW
// SUBJECT" before, and "bench end ROW SUBJECT" after.
class MeasuredSpan {
public:
    explicit MeasuredSpan(const Case& measured) noexcept;
    ~MeasuredSpan();
    MeasuredSpan(const MeasuredSpan&) = delete;
    MeasuredSpan& operator=(const MeasuredSpan&) = delete;

private:
    const Case& case_;
};

// Has callgrind write what it has counted for the case since the last time, under the words "ROW
// SUBJECT". Does nothing outside callgrind.
void WriteInstructions(const Case& measured);

// Begin and end of what callgrind counts, for a program that measures a single thing.
void BeginInstructions() noexcept;
void EndInstructions() noexcept;

}  // namespace Bench

#include "support/ProcessLedger.h"

#include "support/posix/ProcessState.h"

namespace Support {

namespace {

ProcessState noted;

}  // namespace

void NoteProcess() {
    noted = ProcessState::Now();
}

std::string DifferenceOfProcess() {
    return noted.DifferenceTo(ProcessState::Now());
}

}  // namespace Support

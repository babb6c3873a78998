// Counts what the operations of this library and those of bare system calls ask for. See Counting.h
// and Memory.h for what it prints, and Marks.h for what instruction counters and tracers see of it.

#include <VelNet/SocketInitialization.h>

#include <cstdio>
#include <cstdlib>

#include "harness/Counting.h"
#include "harness/FailureReason.h"
#include "harness/Memory.h"
#include "harness/OwnNetwork.h"
#include "harness/RawSockets.h"
#include "rows/Rows.h"

namespace {

Bench::Cases AllCases() {
    Bench::Cases cases;
    Bench::AddPlainRows(cases);
    Bench::AddPortRows(cases);
    return cases;
}

}  // namespace

int main() {
    try {
        Bench::RaiseDescriptorLimit();
        Bench::EnterOwnNetwork();
        const VelNet::SocketInitialization sockets;
        Bench::PrintSocketMemory();
        Bench::CountCases(AllCases());
        return EXIT_SUCCESS;
    } catch (...) {
        std::fprintf(stderr, "bench: %s\n", Bench::FailureReason().c_str());
        return EXIT_FAILURE;
    }
}

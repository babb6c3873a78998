// Counts what operations take as the numbers grow that they depend on; see Counting.h for what it
// prints.
//
//   bench_scale [HOSTS]
//
// HOSTS is the table of hosts that this process resolves from, and is overwritten; without it hosts
// of many addresses are left out.

#include "ScaledRows.h"
#include "harness/Counting.h"
#include "harness/FailureReason.h"
#include "harness/OwnNetwork.h"
#include "harness/RawSockets.h"

#include <VelNet/SocketInitialization.h>

#include <cstdio>
#include <cstdlib>

int main(int count, char** words) {
    try {
        Bench::RaiseDescriptorLimit();
        Bench::EnterOwnNetwork();
        const VelNet::SocketInitialization sockets;
        Bench::Cases cases;
        Bench::AddSocketGrowth(cases);
        Bench::AddCollectionGrowth(cases);
        Bench::AddCacheGrowth(cases);
        Bench::AddByteGrowth(cases);
        Bench::AddThreadGrowth(cases);
        if (count > 1) Bench::AddAddressGrowth(cases, words[1]);
        Bench::CountCases(cases, {1, 1});
        return EXIT_SUCCESS;
    } catch (...) {
        std::fprintf(stderr, "bench: %s\n", Bench::FailureReason().c_str());
        return EXIT_FAILURE;
    }
}

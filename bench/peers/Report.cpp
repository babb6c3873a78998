// Measures the operations of this library beside those of bare system calls and of its peers.
//
//   bench_report counts     see Counting.h and Memory.h
//   bench_report times      see Timing.h

#include <VelNet/SocketInitialization.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "Peers.h"
#include "harness/Counting.h"
#include "harness/FailureReason.h"
#include "harness/Memory.h"
#include "harness/OwnNetwork.h"
#include "harness/RawSockets.h"
#include "harness/Timing.h"
#include "rows/Rows.h"

namespace {

using Bench::Case;
using Bench::Cases;

void AddPeerCases(Cases& cases) {
    Bench::AddAsioCases(cases);
    Bench::AddPocoCases(cases);
    Bench::AddAceCases(cases);
    Bench::AddSfmlCases(cases);
    Bench::AddLibuvCases(cases);
    Bench::AddSpdlogCases(cases);
}

// Every row's cases stand together, and rows in the order of their first cases.
Cases InRows(const Cases& cases) {
    Cases ordered;
    for (const Case& first : cases) {
        const auto isOfRow = [&](const Case& other) { return other.row == first.row; };
        if (std::any_of(ordered.begin(), ordered.end(), isOfRow)) continue;
        std::copy_if(cases.begin(), cases.end(), std::back_inserter(ordered), isOfRow);
    }
    return ordered;
}

Cases AllPlainCases() {
    Cases cases;
    Bench::AddPlainRows(cases);
    AddPeerCases(cases);
    return InRows(cases);
}

void PrintMemory() {
    Bench::PrintSocketMemory();
    Bench::PrintAsioMemory();
    Bench::PrintPocoMemory();
    Bench::PrintSfmlMemory();
    Bench::PrintLibuvMemory();
}

void Count() {
    PrintMemory();
    Cases cases = AllPlainCases();
    Bench::AddPortRows(cases);
    Bench::CountCases(cases);
}

int Run(std::string_view mode) {
    const VelNet::SocketInitialization sockets;
    if (mode == "counts")
        Count();
    else
        Bench::TimeCases(AllPlainCases());
    return EXIT_SUCCESS;
}

}  // namespace

int main(int count, char** words) {
    const std::string_view mode = count == 2 ? words[1] : "";
    if (mode != "counts" && mode != "times") {
        std::fputs("usage: bench_report counts | times\n", stderr);
        return 2;
    }
    try {
        Bench::RaiseDescriptorLimit();
        Bench::EnterOwnNetwork();
        return Run(mode);
    } catch (...) {
        std::fprintf(stderr, "bench: %s\n", Bench::FailureReason().c_str());
        return EXIT_FAILURE;
    }
}

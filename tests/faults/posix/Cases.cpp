#include "faults/posix/Cases.h"

#include "faults/posix/ErrorNumbers.h"

namespace Faults {

namespace {

// The quick cut tries two numbers, the full one all, and each with and without an end.
void AddFailures(SystemCalls::SystemCall which, unsigned int nth, bool cold, bool all,
                 std::vector<Fault>& faults) {
    const auto errors = RowOf(which).errors;
    const std::size_t step = all || errors.size() < 2 ? 1 : errors.size() - 1;
    Fault fault = {Fault::Kind::Failure, which, nth, 0, false, cold};
    for (std::size_t index = 0; index < errors.size(); index += step) {
        fault.error = errors[index];
        for (const bool lasting : {false, true}) {
            fault.lasting = lasting;
            if (all || !lasting) faults.push_back(fault);
        }
    }
}

std::vector<Fault> SystemCallFaults(const Counts& counts, bool all) {
    std::vector<Fault> faults;
    for (const FailingFunction& function : FailingFunctions()) {
        const auto kind = static_cast<std::size_t>(function.which);
        const bool isOtherCold =
            all ? counts.coldCalls[kind] > counts.calls[kind] : counts.calls[kind] == 0;
        for (unsigned int nth = 1; nth <= counts.calls[kind]; ++nth) {
            AddFailures(function.which, nth, false, all, faults);
            if (HasOddSuccess(function.which))
                faults.push_back({Fault::Kind::OddSuccess, function.which, nth});
        }
        for (unsigned int nth = 1; isOtherCold && nth <= counts.coldCalls[kind]; ++nth)
            AddFailures(function.which, nth, true, all, faults);
    }
    return faults;
}

std::vector<Fault> AllocationFaults(const Counts& counts, bool all) {
    std::vector<Fault> faults;
    for (const Allocator allocator : {Allocator::Module, Allocator::SystemLibrary}) {
        const bool module = allocator == Allocator::Module;
        const auto kind = module ? Fault::Kind::ModuleMemory : Fault::Kind::LibraryMemory;
        const unsigned int count = counts.allocations[static_cast<int>(allocator)];
        for (unsigned int nth = 1; nth <= count; ++nth) {
            for (const bool lasting : {false, true}) {
                if (!all && (lasting || !module)) continue;
                faults.push_back({.kind = kind, .first = nth, .lasting = lasting});
            }
        }
    }
    return faults;
}

std::vector<Fault> ThreadFaults(Fault::Kind kind, unsigned int count) {
    std::vector<Fault> faults;
    for (unsigned int nth = 1; nth <= count; ++nth)
        faults.push_back({.kind = kind, .first = nth});
    return faults;
}

// Each set of closed streams, and a crowd; with these, and without, each number of descriptors that
// may not be enough. The C library opens some of its own.
std::vector<Fault> DescriptorFaults(const Counts& counts, bool all) {
    constexpr unsigned int Most = Conditions::AllStreams;
    std::vector<Fault> faults;
    for (unsigned int streams = all ? 1 : Most; streams <= Most; ++streams)
        faults.push_back({.conditions = {.closedStreams = streams}});
    faults.push_back({.cold = true, .conditions = {.closedStreams = Most}});
    faults.push_back({.conditions = {.isCrowded = true}});
    const auto end = static_cast<unsigned int>(counts.descriptorsEnd) + 3;
    for (unsigned int left = 0; left < end; ++left) {
        faults.push_back({.conditions = {.descriptorsLeft = left}});
        faults.push_back({.conditions = {.closedStreams = Most, .descriptorsLeft = left}});
        if (all) faults.push_back({.conditions = {.isCrowded = true, .descriptorsLeft = left}});
    }
    return faults;
}

std::vector<Fault> SignalFaults(bool all) {
    std::vector<Fault> faults;
    const unsigned int repetitions = all ? 20 : 1;
    for (unsigned int repetition = 1; repetition <= repetitions; ++repetition) {
        for (const unsigned int perSecond : {1'000U, 10'000U}) {
            for (const bool restarts : {false, true}) {
                if (all || (perSecond > 1'000 && !restarts))
                    faults.push_back(
                        {.first = repetition, .conditions = {.signals = {perSecond, restarts}}});
            }
        }
    }
    return faults;
}

}  // namespace

std::vector<Fault> FaultsOf(Stage stage, const Counts& counts, bool all) {
    switch (stage) {
        case Stage::SystemCalls:
            return SystemCallFaults(counts, all);
        case Stage::Allocations:
            return AllocationFaults(counts, all);
        case Stage::Cancellations:
            return ThreadFaults(Fault::Kind::Cancellation, counts.allCalls);
        case Stage::Forks:
            return ThreadFaults(Fault::Kind::Fork, counts.points);
        case Stage::Descriptors:
            return DescriptorFaults(counts, all);
        case Stage::Signals:
            return SignalFaults(all);
    }
    return {};
}

}  // namespace Faults

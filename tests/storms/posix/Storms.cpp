#include "storms/posix/Storms.h"

#include <VelCompanion/Errors.h>
#include <unistd.h>

namespace Storms {

void Totals::Add(const Totals& more) {
    cases += more.cases;
    bytes += more.bytes;
    startUps += more.startUps;
    failedStartUps += more.failedStartUps;
    threads += more.threads;
    signals += more.signals;
    failures.insert(failures.end(), more.failures.begin(), more.failures.end());
}

std::string LineOf(const Totals& totals) {
    return std::to_string(totals.cases) + " storms: " + std::to_string(totals.signals) +
           " signals over " + std::to_string(totals.bytes) + " bytes, " +
           std::to_string(totals.startUps) + " start-ups (" +
           std::to_string(totals.failedStartUps) + " failed as they should), " +
           std::to_string(totals.threads) + " threads, " + std::to_string(totals.failures.size()) +
           " failed";
}

Bounded::Bounded(unsigned int seconds) {
    ::alarm(seconds);
}

Bounded::~Bounded() {
    ::alarm(0);
}

std::string TextOfException() {
    return VelCompanion::DescribeCurrentException();
}

}  // namespace Storms

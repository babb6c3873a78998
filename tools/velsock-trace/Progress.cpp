#include "Progress.h"

#include <algorithm>
#include <cstdio>

#include "StandardStreams.h"

namespace VelSockTrace {

namespace {

constexpr double Mebi = 1024.0 * 1024.0;

double SecondsBetween(std::chrono::steady_clock::time_point begin,
                      std::chrono::steady_clock::time_point end) {
    return std::chrono::duration<double>(end - begin).count();
}

}  // namespace

Progress::Progress(const Logs& logs) : logs_(logs), isShown_(VelSockTools::ErrorsAreOnTerminal()) {}

Progress::~Progress() {
    if (hasShown_) std::fputs("\r\x1B[K", stderr);
}

void Progress::Show() {
    const Clock::time_point now = Clock::now();
    if (SecondsBetween(shown_, now) < 0.25) return;
    shown_ = now;
    hasShown_ = true;
    const double consumed = static_cast<double>(logs_.Consumed()) / Mebi;
    const double size = std::max(consumed, static_cast<double>(logs_.Size()) / Mebi);
    std::fprintf(stderr, "\r%3.0f%% of %.0f MiB, %.0f MiB/s\x1B[K",
                 size > 0 ? 100 * consumed / size : 100, size,
                 consumed / SecondsBetween(begin_, now));
    std::fflush(stderr);
}

}  // namespace VelSockTrace

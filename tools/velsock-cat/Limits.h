// The time limits of the command line, and how long something takes.
#pragma once

#include <VelCompanion/Waiting.h>

#include <chrono>
#include <optional>

namespace VelSockCat {

// 0 stands for no limit, like an option that was not given.
inline VelCompanion::Milliseconds LimitOf(const std::optional<unsigned int>& milliseconds) {
    if (milliseconds.value_or(0) == 0) return VelCompanion::NoLimit;
    return VelCompanion::Milliseconds(*milliseconds);
}

inline VelCompanion::Milliseconds LeftOf(const VelCompanion::Deadline& deadline) {
    return deadline.HasLimit() ? deadline.Left() : VelCompanion::NoLimit;
}

inline VelCompanion::Deadline NoDeadline() {
    return VelCompanion::Deadline(VelCompanion::NoLimit);
}

// Runs from the beginning of its life.
class Stopwatch {
public:
    std::chrono::duration<double> Elapsed() const { return Clock::now() - begin_; }

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point begin_ = Clock::now();
};

}  // namespace VelSockCat

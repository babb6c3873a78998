// The time limits of the command line.
#pragma once

#include <VelCompanion/Waiting.h>

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

}  // namespace VelSockCat

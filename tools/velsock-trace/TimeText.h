// Times as the log writes them: UTC with microseconds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace VelSockTrace {

inline constexpr std::size_t TimeTextSize = sizeof "2026-11-22T13:01:02.123456Z" - 1;

// Reads exactly that form. Remembers the day, since neighbouring lines have the same one.
class TimeReader {
public:
    std::optional<std::int64_t> Read(std::string_view text) noexcept;

private:
    char date_[10] = {};
    std::int64_t midnight_ = 0;
};

// A time that a user has written: the form above, or its beginning down to the minute, the second
// or the day. Takes the earliest time that begins so.
std::optional<std::int64_t> ReadTime(const std::string& text);

std::string TimeText(std::int64_t microseconds);

}  // namespace VelSockTrace

#include <charconv>

#include "LineHead.h"

namespace VelSockTrace {

namespace {

// "[4711:4712] #17 ", the mark optional.
bool TakeProcess(std::string_view& text, LineHead& head) noexcept {
    std::uint64_t thread = 0;
    if (!Take(text, "[") || !TakeNumber(text, head.process) || !Take(text, ":") ||
        !TakeNumber(text, thread) || !Take(text, "] "))
        return false;
    return !Take(text, "#") || (TakeNumber(text, head.mark) && Take(text, " "));
}

}  // namespace

bool Take(std::string_view& text, std::string_view prefix) noexcept {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

bool TakeNumber(std::string_view& text, std::uint64_t& number) noexcept {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

bool ReadPlainLine(std::string_view line, TimeReader& times, LineHead& head) noexcept {
    if (line.size() <= TimeTextSize || line[TimeTextSize] != ' ') return false;
    const auto time = times.Read(line.substr(0, TimeTextSize));
    if (!time) return false;
    head.time = *time;
    line.remove_prefix(TimeTextSize + 1);
    if (line.starts_with('[') && !TakeProcess(line, head)) return false;

    const std::size_t slash = line.find('/');
    if (slash == std::string_view::npos) return false;
    const std::size_t colon = line.find(": ", slash);
    if (colon == std::string_view::npos) return false;
    head.router = line.substr(0, slash);
    head.category = line.substr(slash + 1, colon - slash - 1);
    head.text = line.substr(colon + 2);
    return true;
}

}  // namespace VelSockTrace

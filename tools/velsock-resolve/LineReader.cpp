#include "LineReader.h"

#include <array>
#include <string_view>
#include <utility>

#include "StandardStreams.h"

namespace VelSockResolve {

std::optional<std::string> LineReader::Next() {
    for (;;) {
        if (auto line = TakeWholeLine()) return line;
        if (ReadMore()) continue;
        if (text_.empty()) return {};
        return std::exchange(text_, {});
    }
}

std::optional<std::string> LineReader::TakeWholeLine() {
    constexpr std::string_view ends("\n\0", 2);
    const std::size_t end = text_.find_first_of(ends);
    if (end == std::string::npos) return {};
    std::string line = text_.substr(0, end);
    if (text_[end] == '\n' && !line.empty() && line.back() == '\r') line.pop_back();
    text_.erase(0, end + 1);
    return line;
}

bool LineReader::ReadMore() {
    std::array<char, 4096> buffer;
    const std::size_t count = VelSockTools::ReadInput(buffer.data(), buffer.size());
    text_.append(buffer.data(), count);
    return count > 0;
}

}  // namespace VelSockResolve

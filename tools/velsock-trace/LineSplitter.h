// Splits what is read into lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace VelSockTrace {

struct Line {
    std::string_view text;  // without its line feed; valid until the next call
    bool isCut = false;     // it was longer than the limit
};

// Reads large blocks and copies a line only when it crosses a block's end. A file is read rather
// than mapped, since the log may be truncated meanwhile. A line above the limit is cut there, so
// that memory is bounded whatever the file holds.
class LineSplitter {
public:
    // Reads at most so many bytes; returns 0 if there are none at present.
    using Reader = std::function<std::size_t(char*, std::size_t)>;

    static constexpr std::size_t UsualLimit = std::size_t{64} << 20U;

    explicit LineSplitter(Reader reader, std::size_t limit = UsualLimit)
        : reader_(std::move(reader)), limit_(limit) {}

    // Returns the next line that is complete, or nothing if there is none at present.
    std::optional<Line> Next();

    // Returns what follows the last line feed, if anything, as a line.
    std::optional<Line> Rest();

    // How many bytes the lines had so far.
    std::uint64_t Consumed() const noexcept { return consumed_; }

private:
    bool ReadMore();
    std::optional<Line> Take(std::size_t size, std::size_t taken);
    std::optional<Line> CutLongLine();

    Reader reader_;
    std::size_t limit_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0;    // of the next line
    std::size_t scanned_ = 0;  // before it there is no line feed
    std::size_t end_ = 0;
    std::uint64_t consumed_ = 0;
    bool isDiscarding_ = false;  // the rest of a line that was cut
};

}  // namespace VelSockTrace

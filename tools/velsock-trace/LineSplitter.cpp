#include "LineSplitter.h"

#include <algorithm>
#include <cstring>

namespace VelSockTrace {

namespace {

constexpr std::size_t Block = std::size_t{1} << 20U;

}  // namespace

std::optional<Line> LineSplitter::Next() {
    for (;;) {
        const void* const found =
            end_ == scanned_ ? nullptr
                             : std::memchr(buffer_.data() + scanned_, '\n', end_ - scanned_);
        if (found != nullptr) {
            const auto size = static_cast<std::size_t>(static_cast<const char*>(found) -
                                                       (buffer_.data() + begin_));
            const bool wasDiscarding = std::exchange(isDiscarding_, false);
            const auto line = Take(size, size + 1);
            if (wasDiscarding) continue;
            return Line{line->text.substr(0, limit_), size > limit_};
        }
        scanned_ = end_;
        if (isDiscarding_) Take(end_ - begin_, end_ - begin_);
        if (end_ - begin_ >= limit_) return CutLongLine();
        if (!ReadMore()) return {};
    }
}

std::optional<Line> LineSplitter::Rest() {
    if (end_ == begin_ || std::exchange(isDiscarding_, false)) return {};
    return Take(end_ - begin_, end_ - begin_);
}

std::optional<Line> LineSplitter::CutLongLine() {
    auto line = Take(limit_, end_ - begin_);
    line->isCut = true;
    isDiscarding_ = true;
    return line;
}

std::optional<Line> LineSplitter::Take(std::size_t size, std::size_t taken) {
    const Line line{{buffer_.data() + begin_, size}};
    begin_ += taken;
    scanned_ = begin_;
    consumed_ += taken;
    return line;
}

// What is left of a line moves to the front; the buffer grows until the line fits.
bool LineSplitter::ReadMore() {
    if (begin_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        scanned_ -= begin_;
        begin_ = 0;
    }
    if (buffer_.size() < end_ + Block) buffer_.resize(std::max(2 * end_, end_ + Block));
    const std::size_t count = reader_(buffer_.data() + end_, buffer_.size() - end_);
    end_ += count;
    return count > 0;
}

}  // namespace VelSockTrace

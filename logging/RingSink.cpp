#include "VelLogging/RingSink.h"

#include "Appending.h"

#include <algorithm>

namespace VelLogging {

static_assert(std::atomic<unsigned long long>::is_always_lock_free);

namespace {

std::size_t AtMost(std::size_t limit, unsigned long long count) noexcept {
    return static_cast<std::size_t>(std::min<unsigned long long>(limit, count));
}

}  // namespace

RingSink::RingSink(std::size_t bytes, Format format)
    : format_(format),
      size_(std::max<std::size_t>(bytes, 2)),
      bytes_(std::make_unique<Byte[]>(size_)) {}

// A reader that sees a byte of this line sees that it has been begun.
void RingSink::Write(const VelLog::LogRecord& record) {
    const std::string line = LineOf(record, format_);
    unsigned long long position = written_.load(std::memory_order_relaxed);
    const unsigned long long end = position + line.size();
    begun_.store(end, std::memory_order_seq_cst);
    for (const char byte : line)
        bytes_[position++ % size_].store(byte, std::memory_order_release);
    written_.store(end, std::memory_order_seq_cst);
}

// What a ring holds of so many bytes begins there.
unsigned long long RingSink::OldestOf(unsigned long long bytes) const noexcept {
    return bytes > size_ ? bytes - size_ : 0;
}

char RingSink::ByteAt(unsigned long long position) const noexcept {
    return bytes_[position % size_].load(std::memory_order_acquire);
}

std::string RingSink::Lines() const {
    const unsigned long long end = written_.load();
    const unsigned long long begin = OldestOf(end);
    std::string lines;
    lines.reserve(AtMost(size_, end - begin));
    for (unsigned long long position = begin; position < end; ++position)
        lines += ByteAt(position);
    // What has been overwritten meanwhile is not to be trusted, nor is the rest of its line.
    const unsigned long long valid = std::clamp(OldestOf(begun_.load()), begin, end);
    if (valid == 0) return lines;
    const std::size_t endOfCutLine = lines.find('\n', AtMost(size_, valid - begin));
    return endOfCutLine == std::string::npos ? std::string() : lines.substr(endOfCutLine + 1);
}

bool RingSink::Dump(int descriptor) const noexcept {
    constexpr std::size_t BlockSize = 256;
    char block[BlockSize];
    const unsigned long long end = written_.load();
    unsigned long long position = OldestOf(end);
    bool lacksBeginning = position > 0;  // the line at this position
    bool lacksEnd = false;               // the line written last
    while (position < end) {
        const std::size_t count = AtMost(BlockSize, end - position);
        for (std::size_t index = 0; index < count; ++index)
            block[index] = ByteAt(position + index);
        const unsigned long long valid = OldestOf(begun_.load());
        std::size_t first = 0;
        if (valid > position) {
            lacksBeginning = true;
            first = AtMost(count, valid - position);
            if (lacksEnd && !System::WriteFromHandler(descriptor, "\n", 1)) return false;
            lacksEnd = false;
        }
        while (lacksBeginning && first < count)
            lacksBeginning = block[first++] != '\n';
        if (!System::WriteFromHandler(descriptor, block + first, count - first)) return false;
        if (first < count) lacksEnd = block[count - 1] != '\n';
        position += count;
    }
    return true;
}

}  // namespace VelLogging

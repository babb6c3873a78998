#include "VelLogging/RingSink.h"

#include "Appending.h"

#include <algorithm>

namespace VelLogging {

static_assert(std::atomic<unsigned long long>::is_always_lock_free);

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

// Passes the bytes on in blocks, the oldest first. What is overwritten before it has been read is
// left out up to the end of its line.
template <class Take>
bool RingSink::Read(Take take) const {
    constexpr std::size_t BlockSize = 256;
    char block[BlockSize];
    const unsigned long long end = written_.load();
    unsigned long long position = end > size_ ? end - size_ : 0;
    bool isWithinLine = position > 0;
    while (position < end) {
        const auto count =
            static_cast<std::size_t>(std::min<unsigned long long>(BlockSize, end - position));
        for (std::size_t index = 0; index < count; ++index)
            block[index] = bytes_[(position + index) % size_].load(std::memory_order_acquire);
        const unsigned long long begun = begun_.load();
        const unsigned long long valid = begun > size_ ? begun - size_ : 0;
        std::size_t first = 0;
        if (valid > position) {
            isWithinLine = true;
            first = static_cast<std::size_t>(std::min<unsigned long long>(count, valid - position));
        }
        while (isWithinLine && first < count)
            isWithinLine = block[first++] != '\n';
        if (!take(block + first, count - first)) return false;
        position += count;
    }
    return true;
}

std::string RingSink::Lines() const {
    std::string lines;
    Read([&](const char* bytes, std::size_t count) {
        lines.append(bytes, count);
        return true;
    });
    return lines;
}

bool RingSink::Dump(int descriptor) const noexcept {
    return Read([descriptor](const char* bytes, std::size_t count) {
        return System::WriteFromHandler(descriptor, bytes, count);
    });
}

}  // namespace VelLogging

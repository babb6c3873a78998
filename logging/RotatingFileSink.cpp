#include "VelLogging/RotatingFileSink.h"

#include "Appending.h"

#include <stdexcept>
#include <utility>

namespace VelLogging {

namespace {

constexpr long long LookInterval = 1'000'000;  // microseconds

System::File OpenOrThrow(const std::string& path) {
    std::string reason;
    const System::File file = System::OpenForAppending(path, reason);
    if (file == System::NoFile)
        throw std::runtime_error("cannot open the log file " + path + ": " + reason);
    return file;
}

}  // namespace

RotatingFileSink::RotatingFileSink(FileOptions options)
    : options_(std::move(options)),
      file_(OpenOrThrow(options_.path)),
      size_(System::SizeOf(file_)),
      isCut_(System::EndsWithinLine(file_)) {}

RotatingFileSink::~RotatingFileSink() {
    Close();
}

void RotatingFileSink::Write(const VelLog::LogRecord& record) {
    const std::lock_guard lock(mutex_);
    FollowMove(record.microsecondsSince1970);
    if (file_ == System::NoFile) Open();
    std::string line = LineOf(record, options_.format, isCut_);
    const bool isFull = options_.maximumSize != 0 && size_ + line.size() > options_.maximumSize;
    if (isFull && size_ > 0) {
        if (isCut_) line.erase(0, 1);
        Rotate();
    }
    Append(line);
}

void RotatingFileSink::Reopen() noexcept {
    const std::lock_guard lock(mutex_);
    Close();
    Open();
}

void RotatingFileSink::Append(const std::string& line) noexcept {
    const Appended appended = VelLogging::Append(file_, line, isCut_);
    size_ += appended.bytes;
    if (!appended.isWhole) CountLost();
}

// A file that cannot be moved away goes on to grow: that loses less than giving up.
void RotatingFileSink::Rotate() {
    Close();
    System::Remove(KeptPath(options_.kept));
    for (unsigned int number = options_.kept; number > 0; --number)
        System::Rename(KeptPath(number - 1), KeptPath(number));
    Open();
}

void RotatingFileSink::Open() noexcept try {
    std::string reason;
    file_ = System::OpenForAppending(options_.path, reason);
    size_ = System::SizeOf(file_);
    isCut_ = System::EndsWithinLine(file_);
} catch (...) {
    return;  // no memory: the next record tries again
}

void RotatingFileSink::Close() noexcept {
    System::Close(std::exchange(file_, System::NoFile));
}

void RotatingFileSink::FollowMove(long long now) noexcept {
    if (now - lastLook_ < LookInterval && now >= lastLook_) return;
    lastLook_ = now;
    if (file_ != System::NoFile && !System::IsAt(file_, options_.path)) Close();
}

// The number 0 is the file itself.
std::string RotatingFileSink::KeptPath(unsigned int number) const {
    return number == 0 ? options_.path : options_.path + '.' + std::to_string(number);
}

}  // namespace VelLogging

#include "LogFile.h"

#include "StandardStreams.h"

namespace VelSockTrace {

using VelSockTools::InputFile;

LogFile::LogFile(const std::string& path, bool isFollowed)
    : path_(path),
      isFollowed_(isFollowed),
      file_(path == "-" ? nullptr : std::make_unique<InputFile>(path)) {}

std::size_t LogFile::Read(char* buffer, std::size_t size) {
    if (!file_) return VelSockTools::ReadInput(buffer, size);
    const std::size_t count = ReadFile(buffer, size);
    if (count > 0 || !isFollowed_ || !Restart()) return count;
    if (lastByte_ == '\n') return ReadFile(buffer, size);
    lastByte_ = '\n';
    buffer[0] = '\n';
    return 1;
}

std::size_t LogFile::ReadFile(char* buffer, std::size_t size) {
    const std::size_t count = file_->Read(buffer, size);
    if (count > 0) lastByte_ = buffer[count - 1];
    return count;
}

// The caller has read to the end; whoever replaces the file writes no more to the old one.
bool LogFile::Restart() {
    if (file_->RestartIfTruncated()) return true;
    if (!file_->IsReplaced()) return false;
    file_ = std::make_unique<InputFile>(path_);
    return true;
}

}  // namespace VelSockTrace

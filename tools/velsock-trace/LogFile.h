// One file of a log, or standard input, as bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "InputFile.h"

namespace VelSockTrace {

// Follows the file if asked to: through truncation, and from the old file to the new one when the
// path leads to another.
class LogFile {
public:
    // "-" is standard input. Throws Failure with LocalFailure, as Read does.
    LogFile(const std::string& path, bool isFollowed);

    // Returns 0 at the present end. A line that a truncated or replaced file has left open is
    // ended.
    std::size_t Read(char* buffer, std::size_t size);

    // 0 if it is not known.
    std::uint64_t Size() const { return file_ ? file_->Size() : 0; }

private:
    std::size_t ReadFile(char* buffer, std::size_t size);
    bool Restart();

    std::string path_;
    bool isFollowed_;
    char lastByte_ = '\n';
    std::unique_ptr<VelSockTools::InputFile> file_;  // none for standard input
};

}  // namespace VelSockTrace

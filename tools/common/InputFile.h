// A file that is read while others may write, rename or truncate it. Each system has its own
// source.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace VelSockTools {

class InputFile {
public:
    // Throws Failure with LocalFailure, as the others do.
    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // Returns 0 at the present end.
    std::size_t Read(char* buffer, std::size_t size);

    // Returns the present size; 0 if it has none, as a pipe.
    std::uint64_t Size() const;

    // Goes back to the beginning if the file has become shorter than what has been read. Returns
    // whether it has.
    bool RestartIfTruncated();

    // Whether the path leads to another file by now. Where it leads nowhere, the next one is not
    // there yet.
    bool IsReplaced() const;

private:
    std::string path_;
    std::intptr_t handle_;
    std::uint64_t position_ = 0;
};

}  // namespace VelSockTools

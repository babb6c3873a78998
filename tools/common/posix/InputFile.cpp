#include "InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "Failure.h"

namespace VelSockTools {

namespace {

[[noreturn]] void FailToRead(const std::string& path, int error) {
    throw Failure(ExitCode::LocalFailure,
                  "cannot read " + path + ": " + std::system_category().message(error));
}

int DescriptorOf(std::intptr_t handle) noexcept {
    return static_cast<int>(handle);
}

}  // namespace

InputFile::InputFile(const std::string& path)
    : path_(path), handle_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (handle_ == -1) FailToRead(path, errno);
}

InputFile::~InputFile() {
    ::close(DescriptorOf(handle_));
}

std::size_t InputFile::Read(char* buffer, std::size_t size) {
    for (;;) {
        const ssize_t count = ::read(DescriptorOf(handle_), buffer, size);
        if (count >= 0) {
            position_ += static_cast<std::uint64_t>(count);
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR) FailToRead(path_, errno);
    }
}

std::uint64_t InputFile::Size() const {
    struct stat state = {};
    if (::fstat(DescriptorOf(handle_), &state) != 0 || !S_ISREG(state.st_mode)) return 0;
    return static_cast<std::uint64_t>(state.st_size);
}

bool InputFile::RestartIfTruncated() {
    struct stat state = {};
    if (::fstat(DescriptorOf(handle_), &state) != 0 || !S_ISREG(state.st_mode)) return false;
    if (static_cast<std::uint64_t>(state.st_size) >= position_) return false;
    if (::lseek(DescriptorOf(handle_), 0, SEEK_SET) == -1) FailToRead(path_, errno);
    position_ = 0;
    return true;
}

bool InputFile::IsReplaced() const {
    struct stat opened = {};
    struct stat named = {};
    if (::fstat(DescriptorOf(handle_), &opened) != 0 || ::stat(path_.c_str(), &named) != 0)
        return false;
    return opened.st_dev != named.st_dev || opened.st_ino != named.st_ino;
}

}  // namespace VelSockTools

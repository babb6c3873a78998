#include "settings/SettingsFiles.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace Posix {

namespace {

constexpr std::size_t LongestFile = 1U << 20U;

bool IsRegularFile(const Descriptor& file) noexcept {
    struct stat status = {};
    return ::fstat(file.Number(), &status) == 0 && S_ISREG(status.st_mode);
}

template <std::size_t Size>
ssize_t ReadSome(const Descriptor& file, char (&buffer)[Size]) {
    ssize_t count = -1;
    do {
        count = ::read(file.Number(), buffer, Size);
    } while (count < 0 && errno == EINTR);
    return count;
}

}  // namespace

Descriptor RegularFile(Descriptor opened) noexcept {
    if (!opened || IsRegularFile(opened)) return opened;
    errno = ENOENT;
    return {};
}

unsigned int ReadWhole(const Descriptor& file, std::string& text) {
    char buffer[4096];
    while (text.size() <= LongestFile) {
        const ssize_t count = ReadSome(file, buffer);
        if (count <= 0) return count < 0 ? static_cast<unsigned int>(errno) : 0U;
        text.append(buffer, static_cast<std::size_t>(count));
    }
    return EFBIG;
}

// A Unix domain socket cannot be opened (ENXIO) and counts as missing, like a pipe; so does a name
// that is longer than any name can be.
unsigned int ErrorUnlessMissing() noexcept {
    const bool missing =
        errno == ENOENT || errno == ENOTDIR || errno == ENXIO || errno == ENAMETOOLONG;
    return missing ? 0U : static_cast<unsigned int>(errno);
}

}  // namespace Posix

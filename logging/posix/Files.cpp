#include "System.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <utility>

namespace VelLogging::System {

namespace {

constexpr int FirstOfOurs = 3;  // behind the standard streams

int DescriptorOf(File file) noexcept {
    return static_cast<int>(file);
}

// Blocks and consumes the signals that a write may raise for the calling thread: SIGPIPE for a pipe
// without a reader, SIGXFSZ at the limit of file sizes. Leaves those that were pending before.
class WriteSignalGuard {
public:
    WriteSignalGuard() noexcept {
        sigset_t pending;
        ::sigpending(&pending);
        ::sigemptyset(&raised_);
        for (const int signal : {SIGPIPE, SIGXFSZ}) {
            if (::sigismember(&pending, signal) == 0) ::sigaddset(&raised_, signal);
        }
        ::pthread_sigmask(SIG_BLOCK, &raised_, &mask_);
    }
    ~WriteSignalGuard() {
        const timespec atOnce = {};
        const int error = errno;
        while (::sigtimedwait(&raised_, nullptr, &atOnce) > 0 || errno == EINTR) {
        }
        ::pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
        errno = error;
    }
    WriteSignalGuard(const WriteSignalGuard&) = delete;
    WriteSignalGuard& operator=(const WriteSignalGuard&) = delete;

private:
    sigset_t raised_;
    sigset_t mask_;
};

std::size_t WriteAll(int descriptor, const char* bytes, std::size_t count) noexcept {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t written = ::write(descriptor, bytes + done, count - done);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) break;
        done += static_cast<std::size_t>(written);
    }
    return done;
}

// The descriptor of a closed standard stream is not for us: others write there.
int BehindStandardStreams(int descriptor) noexcept {
    if (descriptor < 0 || descriptor >= FirstOfOurs) return descriptor;
    const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, FirstOfOurs);
    ::close(descriptor);
    return moved;
}

bool Describe(File file, struct stat& status) noexcept {
    return file != NoFile && ::fstat(DescriptorOf(file), &status) == 0;
}

}  // namespace

File StandardError() noexcept {
    return STDERR_FILENO;
}

// O_NONBLOCK keeps open from waiting for a pipe's reader; such a file is refused.
File OpenForAppending(const std::string& path, std::string& reason) {
    constexpr int Flags =
        O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW | O_NONBLOCK;
    const int descriptor = BehindStandardStreams(::open(path.c_str(), Flags, 0600));
    if (descriptor < 0) {
        reason = errno == ELOOP ? "it is a symbolic link" : std::strerror(errno);
        return NoFile;
    }
    struct stat status = {};
    if (Describe(descriptor, status) && (S_ISREG(status.st_mode) || S_ISCHR(status.st_mode)))
        return descriptor;
    ::close(descriptor);
    reason = "it is neither a regular file nor a device";
    return NoFile;
}

std::size_t Write(File file, std::string_view bytes) noexcept {
    if (file == NoFile) return 0;
    const WriteSignalGuard guard;
    return WriteAll(DescriptorOf(file), bytes.data(), bytes.size());
}

void Close(File file) noexcept {
    if (file != NoFile) ::close(DescriptorOf(file));
}

unsigned long long SizeOf(File file) noexcept {
    struct stat status = {};
    if (!Describe(file, status) || !S_ISREG(status.st_mode)) return 0;
    return static_cast<unsigned long long>(status.st_size);
}

// The file may be open for writing alone, so its end is read through another descriptor.
bool EndsWithinLine(File file) noexcept {
    const unsigned long long size = SizeOf(file);
    if (size == 0) return false;
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", DescriptorOf(file));
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return false;
    char last = '\n';
    const bool isRead = ::pread(descriptor, &last, 1, static_cast<off_t>(size - 1)) == 1;
    ::close(descriptor);
    return isRead && last != '\n';
}

bool IsAt(File file, const std::string& path) noexcept {
    struct stat ours = {};
    struct stat there = {};
    return Describe(file, ours) && ::lstat(path.c_str(), &there) == 0 &&
           ours.st_dev == there.st_dev && ours.st_ino == there.st_ino;
}

void Rename(const std::string& from, const std::string& to) noexcept {
    ::rename(from.c_str(), to.c_str());
}

void Remove(const std::string& path) noexcept {
    ::unlink(path.c_str());
}

bool WriteFromHandler(int descriptor, const char* bytes, std::size_t count) noexcept {
    const int error = errno;
    const bool isWhole = WriteAll(descriptor, bytes, count) == count;
    errno = error;
    return isWhole;
}

}  // namespace VelLogging::System

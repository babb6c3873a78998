#include "Platform/System.h"
#include "system/Descriptors.h"
#include "system/TrustedLinks.h"
#include "system/Waiting.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <ctime>
#include <optional>
#include <string_view>

namespace {

constexpr char LineFeed = '\n';

// The bit of a LogFile, above the descriptor in its lower half, that says that the file is a
// regular one.
constexpr System::LogFile RegularFile = 1LL << 32;

System::LogFile LogFileOf(int descriptor) noexcept {
    struct stat status = {};
    const bool isRegular = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    return isRegular ? descriptor | RegularFile : descriptor;
}

int DescriptorOf(System::LogFile file) noexcept {
    return static_cast<int>(file);
}

// A write to a regular file raises a signal only at a limit of file sizes (RLIMIT_FSIZE). The limit
// is read each time, since it may change while the file is open.
bool MayRaiseSignal(System::LogFile file) noexcept {
    rlimit limit = {};
    return (file & RegularFile) == 0 || ::getrlimit(RLIMIT_FSIZE, &limit) != 0 ||
           limit.rlim_cur != RLIM_INFINITY;
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

// O_NONBLOCK keeps open from waiting for a pipe's reader.
int OpenWithoutWaiting(const char* path) {
    constexpr int Flags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    return Posix::OpenThroughTrustedLinks(path, Flags, 0600);
}

void LetWritesWait(int descriptor) {
    ::fcntl(descriptor, F_SETFL, O_APPEND);
}

// Whether to write again after this result. A record that is partly written is completed, even if
// that means waiting for a reader: the next record must not be appended to half of one.
bool MayGoOn(int descriptor, ssize_t result, bool begun) {
    if (result > 0 || (result < 0 && errno == EINTR)) return true;
    if (result == 0 || errno != EAGAIN || !begun) return false;
    return Posix::WaitUntilReady(descriptor, POLLOUT, Posix::WithoutLimit);
}

}  // namespace

System::LogFile System::StandardError() noexcept {
    return STDERR_FILENO;
}

System::LogFile System::OpenLogFile(const char* path, unsigned int& error) noexcept {
    const Posix::CancellationGuard whole;
    int descriptor = -1;
    do {
        descriptor = OpenWithoutWaiting(path);
    } while (descriptor < 0 && errno == EINTR);
    descriptor = Posix::MoveAboveStandardStreams(descriptor);
    error = descriptor < 0 ? static_cast<unsigned int>(errno) : 0U;
    if (descriptor < 0) return NoLogFile;
    LetWritesWait(descriptor);
    return LogFileOf(descriptor);
}

std::size_t System::WriteLogFile(LogFile file, const char* bytes, std::size_t count) noexcept {
    const Posix::CancellationGuard whole;
    std::optional<WriteSignalGuard> quiet;
    if (MayRaiseSignal(file)) quiet.emplace();
    const int descriptor = DescriptorOf(file);
    std::size_t written = 0;
    while (written < count) {
        const ssize_t result = ::write(descriptor, bytes + written, count - written);
        if (!MayGoOn(descriptor, result, written > 0)) break;
        if (result > 0) written += static_cast<std::size_t>(result);
    }
    return written;
}

// Opens the file again by its descriptor, which itself can only write; the path may name another
// file by now.
bool System::EndsWithinLine(LogFile file) noexcept {
    const Posix::CancellationGuard whole;
    const off_t end = ::lseek(DescriptorOf(file), 0, SEEK_END);
    if (end <= 0) return false;
    constexpr std::string_view folder = "/proc/self/fd/";
    char path[32] = {};
    char* const number = path + folder.copy(path, folder.size());
    std::to_chars(number, path + sizeof path - 1, DescriptorOf(file));
    const Posix::Descriptor reader(::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY));
    char last = LineFeed;
    return ::pread(reader.Number(), &last, 1, end - 1) == 1 && last != LineFeed;
}

void System::CloseLogFile(LogFile file) noexcept {
    if (file != NoLogFile && file != STDERR_FILENO) {
        Posix::CloseDescriptor(DescriptorOf(file));
    }
}

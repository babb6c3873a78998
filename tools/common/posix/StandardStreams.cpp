#include "StandardStreams.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <system_error>

#include "Failure.h"

namespace VelSockTools {

namespace {

[[noreturn]] void Fail(const std::string& what, int error) {
    throw Failure(ExitCode::LocalFailure, what + ": " + std::system_category().message(error));
}

// The standard descriptors are checked in ascending order, so open returns the one that is missing.
// It is opened for the opposite direction, so that its use fails.
void OccupyWhenClosed(int descriptor, int uselessMode) {
    if (::fcntl(descriptor, F_GETFD) != -1) return;
    if (::open("/dev/null", uselessMode) == -1) Fail("Cannot open /dev/null", errno);
}

bool Poll(int descriptor, short events, int milliseconds) {
    pollfd request{descriptor, events, 0};
    return ::poll(&request, 1, milliseconds) > 0;
}

// Whether to repeat the failed call. Waits if another user of the stream has made it non-blocking.
bool IsToBeRepeated(int error, int descriptor, short events) {
    if (error == EAGAIN) Poll(descriptor, events, -1);
    return error == EAGAIN || error == EINTR;
}

}  // namespace

void PrepareStandardStreams() {
    OccupyWhenClosed(STDIN_FILENO, O_WRONLY);
    OccupyWhenClosed(STDOUT_FILENO, O_RDONLY);
    OccupyWhenClosed(STDERR_FILENO, O_RDONLY);
    std::signal(SIGPIPE, SIG_IGN);
}

bool InputIsReady() {
    return Poll(STDIN_FILENO, POLLIN, 0);
}

std::size_t ReadInput(char* buffer, std::size_t size) {
    for (;;) {
        const ssize_t count = ::read(STDIN_FILENO, buffer, size);
        if (count >= 0) return static_cast<std::size_t>(count);
        const int error = errno;
        if (!IsToBeRepeated(error, STDIN_FILENO, POLLIN)) Fail("Cannot read standard input", error);
    }
}

std::optional<unsigned long long> InputSize() {
    struct stat input = {};
    if (::fstat(STDIN_FILENO, &input) != 0 || !S_ISREG(input.st_mode)) return {};
    const off_t place = ::lseek(STDIN_FILENO, 0, SEEK_CUR);
    return static_cast<unsigned long long>(place < input.st_size ? input.st_size - place : 0);
}

bool InputIsTerminal() {
    return ::isatty(STDIN_FILENO) == 1;
}

bool OutputIsTerminal() {
    return ::isatty(STDOUT_FILENO) == 1;
}

bool ErrorsAreOnTerminal() {
    return ::isatty(STDERR_FILENO) == 1;
}

void WriteOutput(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
        const int error = errno;
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (!IsToBeRepeated(error, STDOUT_FILENO, POLLOUT)) {
            Fail("Cannot write standard output", error);
        }
    }
}

}  // namespace VelSockTools

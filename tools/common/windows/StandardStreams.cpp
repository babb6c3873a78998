#include "StandardStreams.h"

#include <windows.h>

#include <algorithm>
#include <string>
#include <system_error>

#include "Failure.h"

namespace VelSockTools {

namespace {

[[noreturn]] void Fail(const std::string& what, DWORD error) {
    const int number = static_cast<int>(error);
    throw Failure(ExitCode::LocalFailure, what + ": " + std::system_category().message(number));
}

// A stale handle could later be a socket's.
void ForgetWhenClosed(DWORD stream) {
    const HANDLE handle = ::GetStdHandle(stream);
    const bool closed = ::GetFileType(handle) == FILE_TYPE_UNKNOWN && ::GetLastError() != NO_ERROR;
    if (closed) ::SetStdHandle(stream, INVALID_HANDLE_VALUE);
}

bool IsTerminal(DWORD stream) {
    DWORD mode = 0;
    return ::GetConsoleMode(::GetStdHandle(stream), &mode) != 0;
}

}  // namespace

void PrepareStandardStreams() {
    for (const DWORD stream : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE})
        ForgetWhenClosed(stream);
}

// A pipe reports how many bytes are waiting, and that there is no writer any more: then a read
// returns at once. One that reports nothing, as a pipe of the system below Wine, may let a read
// wait for ever. A console is signalled when there is input, a file always.
bool InputIsReady() {
    const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
    if (::GetFileType(input) != FILE_TYPE_PIPE)
        return ::WaitForSingleObject(input, 0) == WAIT_OBJECT_0;
    DWORD waiting = 0;
    if (::PeekNamedPipe(input, nullptr, 0, nullptr, &waiting, nullptr) != 0) return waiting > 0;
    return ::GetLastError() == ERROR_BROKEN_PIPE;
}

std::size_t ReadInput(char* buffer, std::size_t size) {
    constexpr std::size_t most = 1U << 30U;
    DWORD count = 0;
    const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
    if (::ReadFile(input, buffer, static_cast<DWORD>(std::min(size, most)), &count, nullptr) != 0)
        return count;
    // The end of a pipe.
    if (::GetLastError() == ERROR_BROKEN_PIPE) return 0;
    Fail("Cannot read standard input", ::GetLastError());
}

std::optional<unsigned long long> InputSize() {
    const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
    LARGE_INTEGER size = {};
    LARGE_INTEGER place = {};
    if (::GetFileType(input) != FILE_TYPE_DISK || ::GetFileSizeEx(input, &size) == 0) return {};
    if (::SetFilePointerEx(input, {}, &place, FILE_CURRENT) == 0) return {};
    const LONGLONG left = size.QuadPart - place.QuadPart;
    return static_cast<unsigned long long>(left > 0 ? left : 0);
}

bool InputIsTerminal() {
    return IsTerminal(STD_INPUT_HANDLE);
}

bool OutputIsTerminal() {
    return IsTerminal(STD_OUTPUT_HANDLE);
}

bool ErrorsAreOnTerminal() {
    return IsTerminal(STD_ERROR_HANDLE);
}

void WriteOutput(std::string_view bytes) {
    constexpr std::size_t most = 1U << 30U;
    while (!bytes.empty()) {
        DWORD count = 0;
        const auto part = static_cast<DWORD>(std::min(bytes.size(), most));
        const HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
        if (::WriteFile(output, bytes.data(), part, &count, nullptr) == 0)
            Fail("Cannot write standard output", ::GetLastError());
        bytes.remove_prefix(count);
    }
}

}  // namespace VelSockTools

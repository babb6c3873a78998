#include <examples/Program.h>
#include <windows.h>

#include <stdexcept>

namespace Examples {

namespace {

constexpr ULONGLONG PatienceInMilliseconds = 60'000;

HANDLE HandleFrom(std::intptr_t number) {
    return reinterpret_cast<HANDLE>(number);
}

std::string CommandLine(const std::string& name, const std::vector<std::string>& words) {
    std::string line = "example-" + name + ".exe";
    for (const std::string& word : words)
        line += " \"" + word + "\"";
    return line;
}

HANDLE Start(std::string command, HANDLE output) {
    STARTUPINFOA streams = {};
    streams.cb = sizeof streams;
    streams.dwFlags = STARTF_USESTDHANDLES;
    streams.hStdOutput = output;
    streams.hStdError = output;
    PROCESS_INFORMATION process = {};
    if (CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                       &streams, &process) == 0)
        throw std::runtime_error("cannot start " + command);
    CloseHandle(process.hThread);
    return process.hProcess;
}

}  // namespace

// The programs lie where the tests are run.
Program::Program(const std::string& name, const std::vector<std::string>& words)
    : process_(0), output_(0) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    if (CreatePipe(&reading, &writing, &inherited, 0) == 0) throw std::runtime_error("no pipe");
    SetHandleInformation(reading, HANDLE_FLAG_INHERIT, 0);
    output_ = reinterpret_cast<std::intptr_t>(reading);
    process_ = reinterpret_cast<std::intptr_t>(Start(CommandLine(name, words), writing));
    CloseHandle(writing);
}

Program::~Program() {
    TerminateProcess(HandleFrom(process_), 1);
    CloseHandle(HandleFrom(process_));
    CloseHandle(HandleFrom(output_));
}

// A pipe cannot be waited for with a limit, so it is asked now and then.
bool Program::ReadMore() {
    const ULONGLONG end = GetTickCount64() + PatienceInMilliseconds;
    DWORD waiting = 0;
    while (PeekNamedPipe(HandleFrom(output_), nullptr, 0, nullptr, &waiting, nullptr) != 0) {
        if (waiting != 0) {
            char block[4096];
            DWORD length = 0;
            ReadFile(HandleFrom(output_), block, sizeof block, &length, nullptr);
            unread_.append(block, length);
            return true;
        }
        if (GetTickCount64() > end) throw std::runtime_error("nothing comes after: " + unread_);
        Sleep(10);
    }
    return false;
}

int Program::Wait() {
    if (WaitForSingleObject(HandleFrom(process_), PatienceInMilliseconds) != WAIT_OBJECT_0)
        throw std::runtime_error("it does not end");
    DWORD code = 0;
    GetExitCodeProcess(HandleFrom(process_), &code);
    return static_cast<int>(code);
}

}  // namespace Examples

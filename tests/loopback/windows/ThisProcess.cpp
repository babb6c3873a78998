#include <support/windows/WinsockCalls.h>
// Behind it.
#include <loopback/ThisProcess.h>
#include <support/RawPeer.h>
#include <tlhelp32.h>
#include <windows.h>

#include <atomic>
#include <csignal>
#include <memory>
#include <stdexcept>
#include <utility>

namespace ThisProcess {

using Support::Fail;
using Support::Require;

namespace {

HANDLE RequireHandle(HANDLE handle, const char* call) {
    if (handle == INVALID_HANDLE_VALUE) Fail(call, GetLastError());
    return handle;
}

// Handles fit into 32 bits on every Windows.
int NumberOf(HANDLE handle) {
    return static_cast<int>(reinterpret_cast<LONG_PTR>(handle));
}
HANDLE HandleOf(int number) {
    return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(number));
}

bool IsSocket(SOCKET handle) {
    int type = 0;
    int length = sizeof type;
    auto* const bytes = static_cast<char*>(static_cast<void*>(&type));
    return getsockopt(handle, SOL_SOCKET, SO_TYPE, bytes, &length) == 0;
}

std::atomic<int> g_interruptions = 0;

}  // namespace

ManyDescriptors::ManyDescriptors(int count) {
    for (int number = 0; number < count; ++number) {
        const SOCKET one = socket(AF_INET, SOCK_STREAM, 0);
        Require(one != INVALID_SOCKET, "too few sockets");
        descriptors_.push_back(static_cast<int>(one));
    }
}

ManyDescriptors::~ManyDescriptors() {
    for (const int descriptor : descriptors_) {
        closesocket(Support::SocketOf(descriptor));
    }
}

// Handles are multiples of 4 and given out from below.
int OpenDescriptors() {
    constexpr SOCKET highest = 0x8000;
    const Support::RawSockets sockets;
    int count = 0;
    for (SOCKET handle = 4; handle < highest; handle += 4) {
        if (IsSocket(handle)) ++count;
    }
    return count;
}

int ThreadCount() {
    const HANDLE snapshot =
        RequireHandle(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0), "snapshot");
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more != 0;
         more = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++count;
    }
    CloseHandle(snapshot);
    return count;
}

std::string HostName() {
    const Support::RawSockets sockets;
    char name[256] = {};
    Require(gethostname(name, sizeof name) == 0, "gethostname");
    return name;
}

std::string SignalDispositions() {
    std::string text;
    for (const int signal : {SIGINT, SIGILL, SIGFPE, SIGSEGV, SIGTERM, SIGBREAK, SIGABRT}) {
        const auto handler = std::signal(signal, SIG_DFL);
        std::signal(signal, handler);
        text += std::to_string(reinterpret_cast<ULONG_PTR>(handler)) + "\n";
    }
    return text;
}

BrokenPipeSignals::BrokenPipeSignals() = default;

BrokenPipeSignals::~BrokenPipeSignals() = default;

int BrokenPipeSignals::Count() const noexcept {
    return 0;
}

InterruptedThread::InterruptedThread() : thread_(), threadId_(GetCurrentThreadId()) {
    g_interruptions = 0;
}

InterruptedThread::~InterruptedThread() = default;

void InterruptedThread::Interrupt() {
    ++g_interruptions;
}

int InterruptedThread::Count() const noexcept {
    return g_interruptions;
}

StandardErrorCapture::StandardErrorCapture() : original_(NumberOf(GetStdHandle(STD_ERROR_HANDLE))) {
    wchar_t folder[MAX_PATH + 1] = {};
    wchar_t path[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH, folder);
    if (GetTempFileNameW(folder, L"err", 0, path) == 0) Fail("GetTempFileName", GetLastError());
    const HANDLE file = CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    file_ = NumberOf(RequireHandle(file, "CreateFile"));
    SetStdHandle(STD_ERROR_HANDLE, file);
}

StandardErrorCapture::~StandardErrorCapture() {
    Restore();
    CloseHandle(HandleOf(file_));
}

std::string StandardErrorCapture::Finish() {
    Restore();
    const DWORD size = GetFileSize(HandleOf(file_), nullptr);
    std::string text(size, '\0');
    DWORD count = 0;
    SetFilePointer(HandleOf(file_), 0, nullptr, FILE_BEGIN);
    if (ReadFile(HandleOf(file_), text.data(), size, &count, nullptr) == 0 || count != size) {
        Fail("ReadFile", GetLastError());
    }
    return text;
}

void StandardErrorCapture::Restore() noexcept {
    SetStdHandle(STD_ERROR_HANDLE, HandleOf(original_));
}

}  // namespace ThisProcess

// winsock2.h comes before everything that may include windows.h.
#include <winsock2.h>
// Behind it.
#include <loopback/ThisProcess.h>
#include <tlhelp32.h>
#include <windows.h>

#include <atomic>
#include <csignal>
#include <memory>
#include <stdexcept>
#include <utility>

namespace RawPeer {

namespace {

constexpr DWORD PatienceInMilliseconds = 60'000;

[[noreturn]] void Fail(const char* call, DWORD error) {
    throw std::runtime_error(std::string(call) + ": " + std::to_string(error));
}

int Require(int result, const char* call) {
    if (result == SOCKET_ERROR) Fail(call, static_cast<DWORD>(WSAGetLastError()));
    return result;
}

SOCKET RequireSocket(SOCKET socket, const char* call) {
    if (socket == INVALID_SOCKET) Fail(call, static_cast<DWORD>(WSAGetLastError()));
    return socket;
}

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

void StartWinsock() {
    WSADATA data;
    if (const int error = WSAStartup(MAKEWORD(2, 2), &data); error != 0) {
        Fail("WSAStartup", static_cast<DWORD>(error));
    }
}

// Winsock for the length of a scope, whether the library has started it or not.
class Winsock {
public:
    Winsock() { StartWinsock(); }
    ~Winsock() { WSACleanup(); }
    Winsock(const Winsock&) = delete;
    Winsock& operator=(const Winsock&) = delete;
};

union Address {
    sockaddr any;
    sockaddr_in ipv4;
};

Address LocalHost(unsigned short port) {
    Address address = {};
    address.ipv4.sin_family = AF_INET;
    address.ipv4.sin_port = htons(port);
    address.ipv4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

template <class Value>
int SetOption(SOCKET socket, int option, const Value& value) {
    const auto* const bytes = static_cast<const char*>(static_cast<const void*>(&value));
    return setsockopt(socket, SOL_SOCKET, option, bytes, sizeof value);
}

bool IsSocket(SOCKET handle) {
    int type = 0;
    int length = sizeof type;
    auto* const bytes = static_cast<char*>(static_cast<void*>(&type));
    return getsockopt(handle, SOL_SOCKET, SO_TYPE, bytes, &length) == 0;
}

std::atomic<int> g_interruptions = 0;

}  // namespace

Connection::Connection(unsigned short port) {
    StartWinsock();
    handle_ = RequireSocket(socket(AF_INET, SOCK_STREAM, 0), "socket");
    Require(SetOption(handle_, SO_RCVTIMEO, PatienceInMilliseconds), "option");
    const Address address = LocalHost(port);
    Require(connect(handle_, &address.any, sizeof address.ipv4), "connect");
}

Connection::~Connection() {
    Close();
    WSACleanup();
}

unsigned short Connection::LocalPort() const {
    Address address = {};
    int length = sizeof address;
    Require(getsockname(handle_, &address.any, &length), "getsockname");
    return ntohs(address.ipv4.sin_port);
}

void Connection::Send(std::string_view text) {
    const int length = static_cast<int>(text.size());
    if (Require(send(handle_, text.data(), length, 0), "send") != length) {
        throw std::runtime_error("short send");
    }
}

std::string Connection::Receive(std::size_t count) {
    std::string text(count, '\0');
    const int length = static_cast<int>(count);
    if (Require(recv(handle_, text.data(), length, MSG_WAITALL), "recv") != length) {
        throw std::runtime_error("short receive");
    }
    return text;
}

void Connection::EndSending() {
    RawPeer::EndSending(handle_);
}

void Connection::Reset() {
    Require(SetOption(handle_, SO_LINGER, linger{1, 0}), "option");
    Close();
}

void Connection::Close() noexcept {
    if (handle_ != INVALID_SOCKET) closesocket(std::exchange(handle_, INVALID_SOCKET));
}

void EndSending(unsigned long long handle) {
    Require(shutdown(handle, SD_SEND), "shutdown");
}

ManyDescriptors::ManyDescriptors(int count) {
    StartWinsock();
    for (int number = 0; number < count; ++number) {
        const SOCKET one = RequireSocket(socket(AF_INET, SOCK_STREAM, 0), "too few sockets");
        descriptors_.push_back(static_cast<int>(one));
    }
}

ManyDescriptors::~ManyDescriptors() {
    for (const int descriptor : descriptors_) {
        closesocket(static_cast<SOCKET>(descriptor));
    }
    WSACleanup();
}

// Handles are multiples of 4 and given out from below.
int OpenDescriptors() {
    constexpr SOCKET highest = 0x8000;
    const Winsock winsock;
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
    const Winsock winsock;
    char name[256] = {};
    Require(gethostname(name, sizeof name), "gethostname");
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

bool IsWine() noexcept {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

}  // namespace RawPeer

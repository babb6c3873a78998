// winsock2.h comes before everything that may include windows.h.
#include <winsock2.h>
// Behind it.
#include <windows.h>

#include "conformance/Provocation.h"

#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace Conformance {

namespace {

[[noreturn]] void Fail(const char* what, unsigned long error) {
    throw std::runtime_error(std::string(what) + ": " + std::to_string(error));
}

// Of a call of Winsock's.
void Require(bool done, const char* what) {
    if (!done) Fail(what, static_cast<unsigned long>(WSAGetLastError()));
}

void RequireOfSystem(bool done, const char* what) {
    if (!done) Fail(what, GetLastError());
}

// Handles fit into 32 bits on every Windows.
SOCKET SocketOf(int descriptor) {
    return static_cast<SOCKET>(descriptor);
}

HANDLE HandleOf(int number) {
    return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(number));
}

int NumberOf(HANDLE handle) {
    return static_cast<int>(reinterpret_cast<LONG_PTR>(handle));
}

// What is done here must leave no trace in the last error of the thread under test.
class LastErrorKept {
public:
    LastErrorKept() : error_(WSAGetLastError()) {}
    ~LastErrorKept() { WSASetLastError(error_); }
    LastErrorKept(const LastErrorKept&) = delete;
    LastErrorKept& operator=(const LastErrorKept&) = delete;

private:
    int error_;
};

union RawAddress {
    sockaddr any;
    sockaddr_in ipv4;
};

RawAddress RawLoopback(unsigned int port) {
    RawAddress address = {};
    address.ipv4.sin_family = AF_INET;
    address.ipv4.sin_port = htons(static_cast<u_short>(port));
    address.ipv4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int RawStream() {
    const SOCKET socket = ::socket(AF_INET, SOCK_STREAM, 0);
    Require(socket != INVALID_SOCKET, "socket");
    return static_cast<int>(socket);
}

template <class Value>
bool SetOption(int descriptor, int option, const Value& value) {
    const auto* const bytes = static_cast<const char*>(static_cast<const void*>(&value));
    return ::setsockopt(SocketOf(descriptor), SOL_SOCKET, option, bytes, sizeof value) == 0;
}

bool FindsTaken(int descriptor, unsigned int port) {
    const RawAddress address = RawLoopback(port);
    if (::bind(SocketOf(descriptor), &address.any, sizeof address) == 0) return false;
    const int error = ::WSAGetLastError();
    return error == WSAEADDRINUSE || error == WSAEACCES;
}

void Await(unsigned long long handle, short events) {
    const LastErrorKept kept;
    WSAPOLLFD wait = {handle, events, 0};
    Require(::WSAPoll(&wait, 1, 60'000) == 1, "the event did not come");
}

}  // namespace

RawPeer::RawPeer(RawPeer&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

RawPeer& RawPeer::operator=(RawPeer&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

RawPeer::~RawPeer() {
    Close();
}

RawPeer RawPeer::ConnectedTo(unsigned int port) {
    const LastErrorKept kept;
    RawPeer peer(RawStream());
    const RawAddress address = RawLoopback(port);
    Require(::connect(SocketOf(peer.descriptor_), &address.any, sizeof address) == 0, "connect");
    return peer;
}

bool RawPeer::FindsPortTaken(unsigned int port) {
    const LastErrorKept kept;
    const RawPeer peer(RawStream());
    return FindsTaken(peer.descriptor_, port);
}

bool RawPeer::FindsPortTakenThoughReusing(unsigned int port) {
    const LastErrorKept kept;
    const RawPeer peer(RawStream());
    Require(SetOption(peer.descriptor_, SO_REUSEADDR, BOOL{TRUE}), "option");
    return FindsTaken(peer.descriptor_, port);
}

void RawPeer::Send(const std::string& text) const {
    const LastErrorKept kept;
    const int length = static_cast<int>(text.size());
    Require(::send(SocketOf(descriptor_), text.data(), length, 0) == length, "send");
}

std::string RawPeer::Receive(std::size_t room) const {
    const LastErrorKept kept;
    std::string text(room, '\0');
    const int count =
        ::recv(SocketOf(descriptor_), text.data(), static_cast<int>(room), MSG_WAITALL);
    Require(count >= 0, "recv");
    text.resize(static_cast<std::size_t>(count));
    return text;
}

std::size_t RawPeer::ReceiveAll() const {
    std::size_t total = 0;
    char buffer[65536];
    int count = 0;
    while ((count = ::recv(SocketOf(descriptor_), buffer, sizeof buffer, 0)) > 0) {
        total += static_cast<std::size_t>(count);
    }
    return total;
}

void RawPeer::Reset() {
    const LastErrorKept kept;
    Require(SetOption(descriptor_, SO_LINGER, linger{1, 0}), "linger");
    Close();
}

void RawPeer::Close() {
    const LastErrorKept kept;
    if (descriptor_ >= 0) ::closesocket(SocketOf(std::exchange(descriptor_, -1)));
}

FullListener::FullListener() : listener_(RawStream()) {
    const LastErrorKept kept;
    RawAddress address = RawLoopback(0);
    int length = sizeof address;
    const SOCKET socket = SocketOf(listener_.Descriptor());
    Require(::bind(socket, &address.any, length) == 0, "bind");
    Require(::listen(socket, 0) == 0, "listen");
    Require(::getsockname(socket, &address.any, &length) == 0, "getsockname");
    port_ = ntohs(address.ipv4.sin_port);
    filler_ = RawPeer::ConnectedTo(port_);
}

void FullListener::Drain() {
    const LastErrorKept kept;
    const SOCKET socket = ::accept(SocketOf(listener_.Descriptor()), nullptr, nullptr);
    const RawPeer accepted(static_cast<int>(socket));
}

void FullListener::Close() {
    listener_.Close();
}

bool EndedConnectionsLeavePortsFree() {
    return true;
}

void EndSending(unsigned long long handle) {
    const LastErrorKept kept;
    Require(::shutdown(handle, SD_SEND) == 0, "shutdown");
}

namespace {

bool IsDatagram(unsigned long long handle) {
    int type = 0;
    int length = sizeof type;
    auto* const bytes = static_cast<char*>(static_cast<void*>(&type));
    Require(::getsockopt(handle, SOL_SOCKET, SO_TYPE, bytes, &length) == 0, "type");
    return type == SOCK_DGRAM;
}

}  // namespace

// That a datagram did not arrive can be read like one.
void AwaitEnd(unsigned long long handle) {
    const LastErrorKept kept;
    Await(handle, IsDatagram(handle) ? POLLRDNORM : short{0});
}

void AwaitReadable(unsigned long long handle) {
    Await(handle, POLLRDNORM);
}

namespace {

constexpr int TicksBeforeAction = 20;
std::atomic<int> tickCount = 0;
std::atomic<bool> calm = true;
std::unique_ptr<std::thread> ticker;

}  // namespace

// Nothing interrupts a call here: the ticks pass in another thread, and the action shows whether
// the call lasts until then.
SignalStorm::SignalStorm(std::function<void()> action, int milliseconds) {
    tickCount = 0;
    calm = false;
    ticker = std::make_unique<std::thread>([action = std::move(action), milliseconds] {
        while (!calm) {
            std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
            if (++tickCount == TicksBeforeAction && action) action();
        }
    });
}

SignalStorm::~SignalStorm() {
    calm = true;
    ticker->join();
    ticker.reset();
}

int SignalStorm::SignalCount() {
    return tickCount;
}

WatchedStandardInput::WatchedStandardInput(const std::string& text)
    : former_(NumberOf(::GetStdHandle(STD_INPUT_HANDLE))) {
    HANDLE output = nullptr;
    HANDLE input = nullptr;
    DWORD count = 0;
    RequireOfSystem(::CreatePipe(&output, &input, nullptr, 0) != 0, "pipe");
    const auto length = static_cast<DWORD>(text.size());
    RequireOfSystem(::WriteFile(input, text.data(), length, &count, nullptr) != 0, "write");
    ::CloseHandle(input);
    ::SetStdHandle(STD_INPUT_HANDLE, output);
}

WatchedStandardInput::~WatchedStandardInput() {
    ::CloseHandle(::GetStdHandle(STD_INPUT_HANDLE));
    ::SetStdHandle(STD_INPUT_HANDLE, HandleOf(former_));
}

std::string WatchedStandardInput::Rest() {
    char buffer[256];
    DWORD count = 0;
    const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
    const bool read = ::ReadFile(input, buffer, sizeof buffer, &count, nullptr) != 0;
    return read ? std::string(buffer, count) : "unreadable";
}

namespace {

constexpr int Tries = 10'000;

HANDLE AnyFile() {
    const HANDLE file = ::CreateFileW(L"NUL", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    RequireOfSystem(file != INVALID_HANDLE_VALUE, "open");
    return file;
}

}  // namespace

// A number that is free is given out again sooner or later.
FileInPlaceOf::FileInPlaceOf(unsigned long long handle) : descriptor_(static_cast<int>(handle)) {
    std::vector<HANDLE> others;
    HANDLE file = AnyFile();
    while (NumberOf(file) != descriptor_ && others.size() < Tries) {
        others.push_back(file);
        file = AnyFile();
    }
    for (const HANDLE other : others)
        ::CloseHandle(other);
    RequireOfSystem(NumberOf(file) == descriptor_, "the number was not given out again");
}

FileInPlaceOf::~FileInPlaceOf() {
    ::CloseHandle(HandleOf(descriptor_));
}

bool FileInPlaceOf::IsStillOpen() const {
    DWORD flags = 0;
    return ::GetHandleInformation(HandleOf(descriptor_), &flags) != 0;
}

}  // namespace Conformance

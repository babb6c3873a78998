#include "support/windows/WinsockCalls.h"
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

using Support::Fail;
using Support::LastErrorKept;
using Support::Require;
using Support::SetOption;
using Support::SocketOf;

namespace {

void RequireOfSystem(bool done, const char* what) {
    if (!done) Fail(what, GetLastError());
}

HANDLE HandleOf(int number) {
    return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(number));
}

int NumberOf(HANDLE handle) {
    return static_cast<int>(reinterpret_cast<LONG_PTR>(handle));
}

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

bool IsTakenFor(const RawPeer& peer, unsigned int port) {
    const RawAddress address = RawLoopback(port);
    if (::bind(SocketOf(peer.Descriptor()), &address.any, sizeof address) == 0) return false;
    const int error = ::WSAGetLastError();
    return error == WSAEADDRINUSE || error == WSAEACCES;
}

void Await(unsigned long long handle, short events) {
    const LastErrorKept kept;
    WSAPOLLFD wait = {handle, events, 0};
    Require(::WSAPoll(&wait, 1, 60'000) == 1, "the event did not come");
}

}  // namespace

bool FindsPortTaken(unsigned int port) {
    const LastErrorKept kept;
    return IsTakenFor(RawPeer::Unconnected(), port);
}

bool FindsPortTakenThoughReusing(unsigned int port) {
    const LastErrorKept kept;
    const RawPeer peer = RawPeer::Unconnected();
    Require(SetOption(SocketOf(peer.Descriptor()), SO_REUSEADDR, BOOL{TRUE}), "option");
    return IsTakenFor(peer, port);
}

FullListener::FullListener() : listener_(RawPeer::Unconnected()) {
    const LastErrorKept kept;
    const RawAddress address = RawLoopback(0);
    const SOCKET socket = SocketOf(listener_.Descriptor());
    Require(::bind(socket, &address.any, sizeof address) == 0, "bind");
    Require(::listen(socket, 0) == 0, "listen");
    port_ = listener_.LocalPort();
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

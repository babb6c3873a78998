// The socket calls of the seam.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "Addresses.h"
#include "Call.h"
#include "scripted/AddressBytes.h"

namespace Winsock {

namespace {

using Scripted::Answer;
using Scripted::Call;

constexpr Handle FirstHandle = 1001;
Handle nextHandle = FirstHandle;

const bool forgotten = Scripted::AtReset([] {
    const auto lock = Scripted::LockState();
    nextHandle = FirstHandle;
});

long long FreshHandle() {
    const auto lock = Scripted::LockState();
    return static_cast<long long>(nextHandle++);
}

std::string LedgerEntry(Handle handle) {
    return "socket " + std::to_string(handle);
}

// Ends a call that makes a socket.
Handle FinishWithSocket(Call& call) {
    const long long usual = call.IsUsual() ? FreshHandle() : 0;
    const auto handle = static_cast<Handle>(call.Finish(usual));
    if (handle != InvalidSocket) Scripted::OpenInLedger(LedgerEntry(handle));
    return handle;
}

int PlayWithAddress(const char* name, Handle handle, const void* address, int length) {
    Call call(name);
    call.Handle(handle)
        .Bytes(address, length, Scripted::AddressText(address, length))
        .Number(length)
        .Play();
    return static_cast<int>(call.Finish());
}

// Adds the arguments of a call that reports an address, and plays it.
const Answer& PlayForAddress(Call& call, Handle handle, const void* address, const int* length) {
    call.Handle(handle).Pointer(address);
    if (address == nullptr || length == nullptr)
        call.Plain("null");
    else
        call.Number(*length);
    return call.Play();
}

std::string AddressOf(const Answer& answer) {
    return answer.kind == Answer::Kind::Usual ? Scripted::SocketAddressBytes("0.0.0.0", 0)
                                              : answer.bytes;
}

int PlayNamed(const char* name, Handle handle, void* address, int* length) {
    Call call(name);
    const Answer& answer = PlayForAddress(call, handle, address, length);
    if (!call.IsFailure()) Scripted::ReportAddress(AddressOf(answer), address, length);
    return static_cast<int>(call.Finish());
}

std::string OptionText(const char* value, int length) {
    int number = 0;
    if (value == nullptr || length != static_cast<int>(sizeof number))
        return Scripted::HexBytes(value, value == nullptr ? 0 : length);
    std::memcpy(&number, value, sizeof number);
    return std::to_string(number);
}

}  // namespace

int WSAStartup(unsigned short version, StartupData* data) {
    Call call("WSAStartup");
    const Answer& answer = call.Hex(version, 4).Pointer(data).Play();
    if (call.IsFailure()) return answer.error;
    if (answer.result != 0) return static_cast<int>(answer.result);
    *data = {};
    data->version = answer.version;
    data->highestVersion = answer.highestVersion;
    Scripted::OpenInLedger("start-up");
    return 0;
}

int WSACleanup() {
    Call call("WSACleanup");
    call.Play();
    Scripted::CloseInLedger("start-up");
    return static_cast<int>(call.Finish());
}

int WSAGetLastError() noexcept {
    Call call("WSAGetLastError");
    call.Play();
    return Scripted::LastError();
}

Handle socket(int family, int type, int protocol) {
    Call call("socket");
    call.Number(family).Number(type).Number(protocol).Play();
    return FinishWithSocket(call);
}

int closesocket(Handle handle) {
    Call call("closesocket");
    call.Handle(handle).Play();
    const bool open = Scripted::IsInLedger(LedgerEntry(handle));
    if (open) Scripted::CloseInLedger(LedgerEntry(handle));
    if (!open && call.IsUsual()) return static_cast<int>(call.Fail(10038));
    return static_cast<int>(call.Finish());
}

int bind(Handle handle, const void* address, int length) {
    return PlayWithAddress("bind", handle, address, length);
}

int connect(Handle handle, const void* address, int length) {
    return PlayWithAddress("connect", handle, address, length);
}

int listen(Handle handle, int backlog) {
    Call call("listen");
    call.Handle(handle).Number(backlog).Play();
    return static_cast<int>(call.Finish());
}

Handle accept(Handle handle, void* address, int* length) {
    Call call("accept");
    const Answer& answer = PlayForAddress(call, handle, address, length);
    if (!call.IsFailure()) Scripted::ReportAddress(AddressOf(answer), address, length);
    return FinishWithSocket(call);
}

int getsockname(Handle handle, void* address, int* length) {
    return PlayNamed("getsockname", handle, address, length);
}

int getpeername(Handle handle, void* address, int* length) {
    return PlayNamed("getpeername", handle, address, length);
}

int send(Handle handle, const char* buffer, int length, int flags) {
    Call call("send");
    call.Handle(handle).Quoted(buffer, length).Number(length).Number(flags).Play();
    return static_cast<int>(call.Finish(length));
}

int recv(Handle handle, char* buffer, int length, int flags) {
    Call call("recv");
    const Answer& answer = call.Handle(handle).Pointer(buffer).Number(length).Number(flags).Play();
    if (call.IsUsual()) {
        ADD_FAILURE() << "recv has no answer left";
        return static_cast<int>(call.Fail(10060));
    }
    if (answer.bytes.size() > static_cast<std::size_t>(std::max(length, 0))) {
        ADD_FAILURE() << "recv has no room for " << answer.bytes;
        return static_cast<int>(call.Fail(10040));
    }
    std::copy(answer.bytes.begin(), answer.bytes.end(), buffer);
    return static_cast<int>(call.Finish());
}

int setsockopt(Handle handle, int level, int option, const char* value, int length) {
    Call call("setsockopt");
    call.Handle(handle).Hex(level).Hex(option);
    call.Bytes(value, length, OptionText(value, length)).Number(length).Play();
    return static_cast<int>(call.Finish());
}

int ioctlsocket(Handle handle, unsigned int command, unsigned int* argument) {
    Call call("ioctlsocket");
    call.Handle(handle).Hex(command).Pointer(argument);
    if (command != CommandBytesAvailable) call.Number(*argument);
    const Answer& answer = call.Play();
    if (call.IsFailure()) return static_cast<int>(call.Finish());
    if (command == CommandBytesAvailable) *argument = static_cast<unsigned int>(answer.result);
    call.Succeed();
    return 0;
}

}  // namespace Winsock

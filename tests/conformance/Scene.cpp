#include "Scene.h"

#include <Platform/System.h>

#include <cstring>
#include <vector>

#include "Answers.h"
#include "Provocation.h"
#include "WineAnswers.h"

namespace Conformance {

namespace {

constexpr int NoCallsError = 4711;

// Looks at the last error and overwrites it.
int TakeLastError() {
    const int error = Winsock::WSAGetLastError();
    System::RestoreErrorNumbers({.winsock = NoCallsError, .system = 0});
    return error;
}

testing::AssertionResult Told(bool right, long long result, int error) {
    if (right) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "result " << result << ", last error " << error;
}

bool IsErrorOfSuccess(int error) {
    return error == 0 || LeavesLastErrorAfterSuccess();
}

void NoteOutcome(long long expected, long long told, std::string_view wineSituation) {
    if (!NotesVaryingAnswers(wineSituation)) NoteAnswer(expected, told);
}

// The outcome of a call that has to fail with an error.
testing::AssertionResult ToldFailure(bool failed, int expected, long long result,
                                     std::string_view wineSituation) {
    const int error = TakeLastError();
    NoteOutcome(expected, failed ? error : result, wineSituation);
    const bool right = failed && error == expected;
    return Told(right || IsWinesAnswer(wineSituation, result, error), result, error);
}

// The outcomes of steps that lead to a test's scene: their answers are not what it is about.
testing::AssertionResult IsDone(int result) {
    const int error = TakeLastError();
    return Told(result == 0 && IsErrorOfSuccess(error), result, error);
}

testing::AssertionResult IsMade(Winsock::Handle handle) {
    return IsDone(handle == Winsock::InvalidSocket ? Winsock::SocketError : 0);
}

}  // namespace

testing::AssertionResult Succeeds(int result, int expected, std::string_view wineSituation) {
    const int error = TakeLastError();
    NoteOutcome(expected, result == Winsock::SocketError ? error : result, wineSituation);
    const bool right = result == expected && IsErrorOfSuccess(error);
    return Told(right || IsWinesAnswer(wineSituation, result, error), result, error);
}

testing::AssertionResult FailsWith(int error, int result, std::string_view wineSituation) {
    return ToldFailure(result == Winsock::SocketError, error, result, wineSituation);
}

testing::AssertionResult FailsWith(int error, Winsock::Handle result,
                                   std::string_view wineSituation) {
    const bool failed = result == Winsock::InvalidSocket;
    return ToldFailure(failed, error, failed ? -1 : 0, wineSituation);
}

testing::AssertionResult FailsWith(int error, const Winsock::HostEntry* result,
                                   std::string_view wineSituation) {
    return ToldFailure(result == nullptr, error, result == nullptr ? -1 : 0, wineSituation);
}

testing::AssertionResult IsOpen(Winsock::Handle result) {
    return Succeeds(result == Winsock::InvalidSocket ? Winsock::SocketError : 0);
}

testing::AssertionResult Answers(long long expected, long long result) {
    NoteAnswer(expected, result);
    if (result == expected) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "answer " << result << " instead of " << expected;
}

void Started::SetUp() {
    Winsock::StartupData data;
    ASSERT_EQ(Winsock::WSAStartup(0x202, &data), 0);
    System::RestoreErrorNumbers({.winsock = NoCallsError, .system = 0});
}

void Started::TearDown() {
    EXPECT_TRUE(IsDone(Winsock::WSACleanup()));
}

void OwnedSocket::Close() {
    if (handle_ != Winsock::InvalidSocket) Winsock::closesocket(Take());
}

OwnedSocket NewStream(int family) {
    OwnedSocket socket(Winsock::socket(family, Winsock::TypeStream, 0));
    EXPECT_TRUE(IsMade(socket.Get()));
    return socket;
}

OwnedSocket NewDatagram(int family) {
    OwnedSocket socket(Winsock::socket(family, Winsock::TypeDatagram, 0));
    EXPECT_TRUE(IsMade(socket.Get()));
    return socket;
}

Winsock::AddressIpv4 Ipv4(unsigned char first, unsigned char second, unsigned char third,
                          unsigned char fourth, unsigned int port) {
    return {.family = Winsock::FamilyIpv4,
            .port = {static_cast<unsigned char>(port >> 8U), static_cast<unsigned char>(port)},
            .address = {first, second, third, fourth},
            .zero = {}};
}

Winsock::AddressIpv4 Loopback(unsigned int port) {
    return Ipv4(127, 0, 0, 1, port);
}

Winsock::AddressIpv6 LoopbackIpv6(unsigned int port) {
    Winsock::AddressIpv6 address = {};
    address.family = Winsock::FamilyIpv6;
    address.port[0] = static_cast<unsigned char>(port >> 8U);
    address.port[1] = static_cast<unsigned char>(port);
    address.address[15] = 1;
    return address;
}

unsigned int PortOf(const Winsock::AddressIpv4& address) {
    return address.port[0] * 256U + address.port[1];
}

Winsock::AddressIpv4 LocalAddress(const OwnedSocket& socket) {
    Winsock::AddressIpv4 address = {};
    int length = sizeof address;
    EXPECT_TRUE(IsDone(Winsock::getsockname(socket.Get(), &address, &length)));
    return address;
}

unsigned int LocalPort(const OwnedSocket& socket) {
    return PortOf(LocalAddress(socket));
}

OwnedSocket Accept(const OwnedSocket& listener) {
    OwnedSocket accepted(Winsock::accept(listener.Get(), nullptr, nullptr));
    EXPECT_TRUE(IsMade(accepted.Get()));
    return accepted;
}

void SetNonBlocking(const OwnedSocket& socket, bool on) {
    unsigned int value = on ? 1 : 0;
    EXPECT_TRUE(IsDone(Winsock::ioctlsocket(socket.Get(), Winsock::CommandNonBlocking, &value)));
}

int SetOption(const OwnedSocket& socket, int option, unsigned int value) {
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    return Winsock::setsockopt(socket.Get(), Winsock::LevelSocket, option, bytes, sizeof bytes);
}

int Send(const OwnedSocket& socket, const std::string& text) {
    return Winsock::send(socket.Get(), text.data(), static_cast<int>(text.size()), 0);
}

std::string Receive(const OwnedSocket& socket, int room) {
    std::string text(static_cast<std::size_t>(room), '\0');
    const int count = Winsock::recv(socket.Get(), text.data(), room, 0);
    if (count < 0) return "failure " + std::to_string(Winsock::WSAGetLastError());
    text.resize(static_cast<std::size_t>(count));
    return text;
}

int TryReceive(const OwnedSocket& socket, int room) {
    std::vector<char> buffer(static_cast<std::size_t>(room));
    return Winsock::recv(socket.Get(), buffer.data(), room, 0);
}

unsigned int BytesAvailable(const OwnedSocket& socket) {
    unsigned int count = 4711;
    EXPECT_TRUE(IsDone(Winsock::ioctlsocket(socket.Get(), Winsock::CommandBytesAvailable, &count)));
    return count;
}

OwnedSocket NewBoundStream() {
    OwnedSocket socket = NewStream();
    EXPECT_TRUE(IsDone(Bind(socket, Loopback(0))));
    return socket;
}

OwnedSocket NewBoundDatagram() {
    OwnedSocket socket = NewDatagram();
    EXPECT_TRUE(IsDone(Bind(socket, Loopback(0))));
    return socket;
}

OwnedSocket NewListener() {
    OwnedSocket listener = NewBoundStream();
    EXPECT_TRUE(IsDone(Winsock::listen(listener.Get(), 16)));
    return listener;
}

Pair NewConnectedPair() {
    const OwnedSocket listener = NewListener();
    OwnedSocket client = NewStream();
    EXPECT_TRUE(IsDone(Connect(client, LocalAddress(listener))));
    return {std::move(client), Accept(listener)};
}

int SendUntilFailure(const OwnedSocket& socket) {
    const std::string block(1U << 20U, 'x');
    int result = 0;
    do {
        result = Send(socket, block);
    } while (result > 0);
    return result;
}

Milliseconds TimeOf(const std::function<void()>& scene) {
    const auto start = std::chrono::steady_clock::now();
    scene();
    return std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now() - start);
}

int RepeatWhile(int error, const std::function<int()>& call) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    int result = call();
    while (result < 0 && Winsock::WSAGetLastError() == error &&
           std::chrono::steady_clock::now() < end) {
        System::Sleep(1);
        result = call();
    }
    return result;
}

void InSignalStorm(int leastSignals, const std::function<void()>& scene, int milliseconds) {
    for (int attempt = 0; attempt < 50; ++attempt) {
        const SignalStorm storm({}, milliseconds);
        scene();
        if (SignalStorm::SignalCount() >= leastSignals) return;
    }
    ADD_FAILURE() << "the signals do not come";
}

}  // namespace Conformance

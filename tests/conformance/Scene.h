// What the scripts of this folder share: how an outcome is told, and the usual sockets and
// addresses.
#pragma once

#include <Platform/Winsock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace Conformance {

// Each takes the result of the call it follows and looks at the last error, which it then
// overwrites: so a call that leaves the last error alone is noticed. Where Wine is known to answer
// otherwise, the situation has a name in its list.
testing::AssertionResult Succeeds(int result, int expected = 0,
                                  std::string_view wineSituation = {});
testing::AssertionResult FailsWith(int error, int result, std::string_view wineSituation = {});
testing::AssertionResult FailsWith(int error, Winsock::Handle result,
                                   std::string_view wineSituation = {});
testing::AssertionResult FailsWith(int error, const Winsock::HostEntry* result,
                                   std::string_view wineSituation = {});
testing::AssertionResult IsOpen(Winsock::Handle result);
// Of a call that returns its whole answer; leaves the last error alone.
testing::AssertionResult Answers(long long expected, long long result);

// A test with Winsock started.
class Started : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
};

// Closes its handle at the end of the scope.
class OwnedSocket {
public:
    OwnedSocket() noexcept = default;
    explicit OwnedSocket(Winsock::Handle handle) noexcept : handle_(handle) {}
    OwnedSocket(OwnedSocket&& other) noexcept : handle_(other.Take()) {}
    OwnedSocket& operator=(OwnedSocket&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~OwnedSocket() { Close(); }

    Winsock::Handle Get() const noexcept { return handle_; }
    Winsock::Handle Take() noexcept { return std::exchange(handle_, Winsock::InvalidSocket); }
    void Close();

private:
    Winsock::Handle handle_ = Winsock::InvalidSocket;
};

OwnedSocket NewStream(int family = Winsock::FamilyIpv4);
OwnedSocket NewDatagram(int family = Winsock::FamilyIpv4);

Winsock::AddressIpv4 Ipv4(unsigned char first, unsigned char second, unsigned char third,
                          unsigned char fourth, unsigned int port);
Winsock::AddressIpv4 Loopback(unsigned int port);
Winsock::AddressIpv6 LoopbackIpv6(unsigned int port);
unsigned int PortOf(const Winsock::AddressIpv4& address);

template <typename Address>
int Bind(const OwnedSocket& socket, const Address& address) {
    return Winsock::bind(socket.Get(), &address, sizeof address);
}
template <typename Address>
int Connect(const OwnedSocket& socket, const Address& address) {
    return Winsock::connect(socket.Get(), &address, sizeof address);
}

// The address that the socket is bound to.
Winsock::AddressIpv4 LocalAddress(const OwnedSocket& socket);
unsigned int LocalPort(const OwnedSocket& socket);

OwnedSocket Accept(const OwnedSocket& listener);
void SetNonBlocking(const OwnedSocket& socket, bool on = true);
int SetOption(const OwnedSocket& socket, int option, unsigned int value);

int Send(const OwnedSocket& socket, const std::string& text);
// The received bytes; a failure is reported as such.
std::string Receive(const OwnedSocket& socket, int room = 100);
// The result of a receive call.
int TryReceive(const OwnedSocket& socket, int room = 100);
unsigned int BytesAvailable(const OwnedSocket& socket);

// Bound to a port of the system's choice on the loopback address.
OwnedSocket NewBoundStream();
OwnedSocket NewBoundDatagram();
OwnedSocket NewListener();

struct Pair {
    OwnedSocket client;
    OwnedSocket server;
};
Pair NewConnectedPair();

// Sends until the call fails.
int SendUntilFailure(const OwnedSocket& socket);

using Milliseconds = std::chrono::milliseconds;
Milliseconds TimeOf(const std::function<void()>& scene);

// Plays the scene in a storm of signals. On a busy machine they may come late, so the scene is
// repeated until at least that many have come during it.
void InSignalStorm(int leastSignals, const std::function<void()>& scene, int milliseconds = 3);

// Repeats the call until it no longer fails with that error, with a pause after each try.
int RepeatWhile(int error, const std::function<int()>& call);

}  // namespace Conformance

// What the loopback tests share: the layer, the log, sockets on 127.0.0.1.
//
// Ports are always the system's choice. Every socket made here has timeouts, so that a test whose
// bytes never come ends with a failure.
#pragma once

#include <VelNet/Socket.h>
#include <VelNet/SocketInitialization.h>
#include <gtest/gtest.h>
#include <loopback/Failure.h>
#include <loopback/RecordingSink.h>

#include <chrono>
#include <initializer_list>
#include <string>
#include <string_view>
#include <thread>

namespace Loopback {

using SocketPtr = VelBase::ReturnPtrI<VelNet::Socket>;
using Clock = std::chrono::steady_clock;

// Longer than anything takes that works, on a machine under load too.
inline constexpr std::chrono::milliseconds Patience = std::chrono::seconds(60);

inline constexpr const char* Error = "Error";
inline constexpr const char* ConnectionTrace = "Connection Trace";
inline constexpr const char* PacketTrace = "Packet Trace";
inline constexpr const char* VerbosePacketTrace = "Verbose Packet Trace";

// Switches the routers named on and all others off.
void EnableOnly(std::initializer_list<const char*> categories);
void EnableAllRouters();

// The layer is up, the routers are off, and what they write when a test switches them on is kept.
class LoopbackTest : public testing::Test {
protected:
    LoopbackTest();
    ~LoopbackTest() override;

    RecordingSink& Sink() { return sink_; }

private:
    RecordingSink sink_;
    VelNet::SocketInitialization layer_;
};

VelNet::Octets LocalHost();
VelNet::Octets AnyAddress();

void SetPatience(VelNet::Socket& socket);
SocketPtr StreamSocket();
SocketPtr DatagramSocket();
// Bound to 127.0.0.1.
SocketPtr Bound(SocketPtr socket);
SocketPtr Listening();
SocketPtr ListeningOn(const VelNet::Octets& address, unsigned short port);

unsigned short PortOf(const VelNet::Socket& socket);
SocketPtr ConnectedTo(const VelNet::Socket& listener);
// The connection that is pending already.
SocketPtr Accepted(VelNet::Socket& listener);

struct Connection {
    SocketPtr client;
    SocketPtr server;
};
Connection Connected();
Connection ConnectedThrough(VelNet::Socket& listener);

// Sends all of the text, in as many calls as it takes.
void SendAll(VelNet::Socket& socket, std::string_view text);
// One call.
std::string ReceiveSome(VelNet::Socket& socket, int room = 4096);
std::string ReceiveExactly(VelNet::Socket& socket, std::size_t count);
// One text there, one back.
void ExpectExchange(VelNet::Socket& one, VelNet::Socket& other);

// The failure of a call of Receive.
Failure FailureOfReceive(VelNet::Socket& socket);

// A record of "Connection Trace" or the packet traces; local and remote address are 127.0.0.1.
std::u16string EndpointsOf(unsigned short localPort, unsigned short remotePort);
std::u16string Endpoints(std::string_view local, unsigned short localPort, std::string_view remote,
                         unsigned short remotePort);

// Asks again and again until the condition holds; false when patience ends first.
template <class Condition>
bool Eventually(Condition condition) {
    const auto end = Clock::now() + Patience;
    while (!condition()) {
        if (Clock::now() > end) return false;
        std::this_thread::yield();
    }
    return true;
}

}  // namespace Loopback

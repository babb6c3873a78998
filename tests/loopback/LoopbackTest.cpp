#include <VelLog/LogControl.h>
#include <loopback/LoopbackTest.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace Loopback {

void EnableOnly(std::initializer_list<const char*> categories) {
    const auto wanted = [categories](const std::string& category) {
        return std::any_of(categories.begin(), categories.end(),
                           [&category](const char* one) { return category == one; });
    };
    for (const char* category : {Error, ConnectionTrace, PacketTrace, VerbosePacketTrace}) {
        EXPECT_TRUE(VelLog::SetRouterEnabled("Network", category, wanted(category)));
    }
}

void EnableAllRouters() {
    EnableOnly({Error, ConnectionTrace, PacketTrace, VerbosePacketTrace});
}

LoopbackTest::LoopbackTest() {
    EnableOnly({});
    VelLog::SetSink(&sink_);
}

LoopbackTest::~LoopbackTest() {
    VelLog::SetSink(nullptr);
    EnableOnly({});
}

VelNet::Octets LocalHost() {
    return {127, 0, 0, 1};
}

VelNet::Octets AnyAddress() {
    return {0, 0, 0, 0};
}

void SetPatience(VelNet::Socket& socket) {
    socket.SetReceiveTimeout(static_cast<unsigned int>(Patience.count()));
    socket.SetSendTimeout(static_cast<unsigned int>(Patience.count()));
}

SocketPtr StreamSocket() {
    SocketPtr socket =
        VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    SetPatience(*socket);
    return socket;
}

SocketPtr DatagramSocket() {
    SocketPtr socket =
        VelNet::CreateSocket(VelNet::Socket::SOCKET_DATAGRAM, VelNet::Socket::PROTOCOL_UDP);
    SetPatience(*socket);
    return socket;
}

SocketPtr Bound(SocketPtr socket) {
    socket->Bind(LocalHost(), 0);
    return socket;
}

SocketPtr Listening() {
    return ListeningOn(LocalHost(), 0);
}

SocketPtr ListeningOn(const VelNet::Octets& address, unsigned short port) {
    SocketPtr socket = StreamSocket();
    socket->Bind(address, port);
    EXPECT_EQ(socket->Listen(), 0);
    return socket;
}

unsigned short PortOf(const VelNet::Socket& socket) {
    return socket.GetLocalAddress().GetPort();
}

SocketPtr ConnectedTo(const VelNet::Socket& listener) {
    SocketPtr client = StreamSocket();
    client->Connect(LocalHost(), PortOf(listener));
    return client;
}

SocketPtr Accepted(VelNet::Socket& listener) {
    VelNet::SocketAddress remote;
    SocketPtr accepted;
    // A listener that does not block may learn of the connection later than the client.
    if (!Eventually([&] { return bool(accepted = listener.Accept(remote)); })) {
        throw std::runtime_error("no connection is pending");
    }
    SetPatience(*accepted);
    return accepted;
}

Connection ConnectedThrough(VelNet::Socket& listener) {
    SocketPtr client = ConnectedTo(listener);
    SocketPtr server = Accepted(listener);
    return {std::move(client), std::move(server)};
}

Connection Connected() {
    return ConnectedThrough(*Listening());
}

void SendAll(VelNet::Socket& socket, std::string_view text) {
    while (!text.empty()) {
        const int sent = socket.Send(text.data(), static_cast<int>(text.size()));
        if (sent == 0) throw std::runtime_error("the system takes no more");
        text.remove_prefix(static_cast<std::size_t>(sent));
    }
}

std::string ReceiveSome(VelNet::Socket& socket, int room) {
    std::string buffer(static_cast<std::size_t>(room), '\0');
    buffer.resize(static_cast<std::size_t>(socket.Receive(buffer.data(), room)));
    return buffer;
}

std::string ReceiveExactly(VelNet::Socket& socket, std::size_t count) {
    std::string received;
    while (received.size() < count) {
        received += ReceiveSome(socket, static_cast<int>(count - received.size()));
    }
    return received;
}

void ExpectExchange(VelNet::Socket& one, VelNet::Socket& other) {
    SendAll(one, "question");
    EXPECT_EQ(ReceiveExactly(other, 8), "question");
    SendAll(other, "answer");
    EXPECT_EQ(ReceiveExactly(one, 6), "answer");
}

Failure FailureOfReceive(VelNet::Socket& socket) {
    return FailureOf([&socket] { ReceiveSome(socket); });
}

std::u16string EndpointsOf(unsigned short localPort, unsigned short remotePort) {
    return Endpoints("127.0.0.1", localPort, "127.0.0.1", remotePort);
}

std::u16string Endpoints(std::string_view local, unsigned short localPort, std::string_view remote,
                         unsigned short remotePort) {
    return Widen("Local address: " + std::string(local) + " (" + std::to_string(localPort) +
                 "), Remote address: " + std::string(remote) + " (" + std::to_string(remotePort) +
                 ")");
}

}  // namespace Loopback

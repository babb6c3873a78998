#include <loopback/ExtendedTest.h>
#include <support/RawPeer.h>

#include <optional>
#include <ostream>
#include <stdexcept>
#include <utility>

namespace Loopback {

namespace {

using VelNet::Socket;

XtPtr Create(Socket::SOCKET_TYPE type, Socket::SOCKET_PROTOCOL protocol,
             SocketXt::ADDR_FAMILY family) {
    XtPtr socket = VelNet::CreateSocketXt(type, protocol);
    if (socket->GetAddressFamily() == family) return socket;

    // A numeric address is the one name that every machine resolves to just that.
    const Machine::Name name(LoopbackOf(family));
    if (!name.IsSet()) return {};
    socket = VelNet::CreateSocketXt(type, protocol);
    return socket->GetAddressFamily() == family ? std::move(socket) : XtPtr();
}

XtPtr WithPatience(XtPtr socket) {
    if (socket) SetPatience(*socket);
    return socket;
}

}  // namespace

const char* LoopbackOf(SocketXt::ADDR_FAMILY family) {
    return family == Ipv6 ? "::1" : "127.0.0.1";
}

const char* ForeignOf(SocketXt::ADDR_FAMILY family) {
    return family == Ipv6 ? "2001:db8::1" : "203.0.113.1";
}

XtPtr StreamXt(SocketXt::ADDR_FAMILY family) {
    return WithPatience(Create(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP, family));
}

XtPtr DatagramXt(SocketXt::ADDR_FAMILY family) {
    return WithPatience(Create(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP, family));
}

XtPtr Bound(XtPtr socket) {
    socket->Bind(LoopbackOf(socket->GetAddressFamily()), "0");
    return socket;
}

XtPtr ListeningXt(SocketXt::ADDR_FAMILY family) {
    XtPtr socket = Bound(StreamXt(family));
    EXPECT_EQ(socket->Listen(), 0);
    return socket;
}

void SetPatience(SocketXt& socket) {
    socket.SetReceiveTimeout(static_cast<unsigned int>(Patience.count()));
    socket.SetSendTimeout(static_cast<unsigned int>(Patience.count()));
}

std::string PortOf(const SocketXt& socket) {
    return std::to_string(Support::LocalPortOf(socket.GetHandle()));
}

std::string ComputerName() {
    const XtPtr socket = VelNet::CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
    return socket->GetSpecialAddress(VelNet::SPECIAL_THIS_MACHINE, Ipv4).c_str();
}

AcceptedXt Accept(SocketXt& listener) {
    AcceptedXt accepted;
    ReturnString host;
    ReturnString port;
    listener.Accept(accepted.socket, host, port);
    SetPatience(*accepted.socket);
    accepted.host = host.c_str();
    accepted.port = port.c_str();
    return accepted;
}

XtConnection ConnectedThrough(SocketXt& listener) {
    XtPtr client = StreamXt(listener.GetAddressFamily());
    client->Connect(LoopbackOf(listener.GetAddressFamily()), PortOf(listener).c_str());
    return {std::move(client), Accept(listener).socket};
}

void PrintTo(const Received& received, std::ostream* stream) {
    *stream << testing::PrintToString(received.bytes) << " from " << received.host << " port "
            << received.port;
}

Received ReceiveFrom(SocketXt& socket, int room) {
    Received received;
    received.bytes.resize(static_cast<std::size_t>(room));
    ReturnString host;
    ReturnString port;
    const int count = socket.RecvFrom(received.bytes.data(), room, host, port);
    received.bytes.resize(static_cast<std::size_t>(count));
    received.host = host.c_str();
    received.port = port.c_str();
    return received;
}

int SendTo(SocketXt& socket, std::string_view bytes, const char* host, const std::string& port) {
    return socket.SendTo(bytes.data(), static_cast<int>(bytes.size()), host, port.c_str());
}

std::u16string TextEnds(const std::string& localHost, const std::string& localPort,
                        const std::string& remoteHost, const std::string& remotePort) {
    return Widen("Local address: " + localHost + " (" + localPort +
                 "), Remote address: " + remoteHost + " (" + remotePort + ")");
}

void ExtendedTest::SetUp() {
    const std::string lacking = Lacking(GetParam());
    if (!lacking.empty()) GTEST_SKIP() << lacking;
}

std::string Lacking(SocketXt::ADDR_FAMILY family) {
    const XtPtr socket = DatagramXt(family);
    if (!socket) {
        return "this computer's name is of the other IP version, and the system lets no test "
               "change that";
    }
    const Failure failure = FailureOf([&] { socket->Bind(VelNet::SPECIAL_LOOPBACK, "0"); });
    return failure.code == 10049 ? "this machine has no loopback address of this IP version" : "";
}

std::string NameOfVersion(const testing::TestParamInfo<SocketXt::ADDR_FAMILY>& info) {
    return info.param == Ipv6 ? "Ipv6" : "Ipv4";
}

}  // namespace Loopback

#include "LibrarySockets.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include "RawSockets.h"

namespace Bench {

using VelNet::Socket;
using VelNet::SocketXt;

VelNet::Octets Loopback() {
    return {127, 0, 0, 1};
}

SocketOwner CreateStream() {
    return VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
}

SocketOwner CreateListener() {
    SocketOwner listener = CreateStream();
    listener->Bind(Loopback(), 0);
    listener->Listen();
    return listener;
}

ExtendedOwner CreateExtendedStream() {
    return VelNet::CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
}

ExtendedOwner CreateExtendedListener() {
    ExtendedOwner listener = CreateExtendedStream();
    listener->Bind(VelNet::SPECIAL_LOOPBACK, "0");
    listener->Listen();
    return listener;
}

ExtendedOwner CreateBoundExtendedDatagram() {
    ExtendedOwner socket = VelNet::CreateSocketXt(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP);
    socket->Bind(VelNet::SPECIAL_LOOPBACK, "0");
    return socket;
}

std::string PortTextOf(const SocketXt& socket) {
    // The port stands at the same place in both families' addresses.
    sockaddr_in6 address{};
    socklen_t size = sizeof address;
    void* const place = &address;
    Checked(
        ::getsockname(static_cast<int>(socket.GetHandle()), static_cast<sockaddr*>(place), &size),
        "getsockname");
    return std::to_string(ntohs(address.sin6_port));
}

const char* LoopbackTextOf(const SocketXt& socket) {
    return socket.GetAddressFamily() == SocketXt::FAMILY_IPV6 ? "::1" : "127.0.0.1";
}

ClassicPair::ClassicPair() : client_(CreateStream()) {
    const SocketOwner listener = CreateListener();
    client_->Connect(Loopback(), listener->GetLocalAddress().GetPort());
    VelNet::SocketAddress remote;
    server_ = listener->Accept(remote);
}

ExtendedPair::ExtendedPair() : client_(CreateExtendedStream()) {
    const ExtendedOwner listener = CreateExtendedListener();
    client_->Connect(VelNet::SPECIAL_LOOPBACK, PortTextOf(*listener).c_str());
    VelBase::ReturnString host;
    VelBase::ReturnString port;
    listener->Accept(server_, host, port);
}

}  // namespace Bench

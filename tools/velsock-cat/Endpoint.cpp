#include "Endpoint.h"

#include <cstdio>

#include "Failure.h"

namespace VelSockCat {

std::string EndpointText(const std::string& host, unsigned short port) {
    return host + " port " + std::to_string(port);
}

void AnnounceListening(const std::string& host, unsigned short port) {
    std::fprintf(stderr, "listening on %s\n", EndpointText(host, port).c_str());
    std::fflush(stderr);
}

void AnnounceListening(const VelNet::Socket& classic) {
    const VelNet::SocketAddress address = classic.GetLocalAddress();
    AnnounceListening(address.GetOctets().GetAddressString().c_str(), address.GetPort());
}

void Remark(const std::string& text) {
    VelSockTools::Remark("velsock-cat", text);
}

std::string SpecialAddressOf(const VelNet::SocketXt& socket, VelNet::SpecialAddressKind kind) {
    return socket.GetSpecialAddress(kind, socket.GetAddressFamily()).c_str();
}

void SetTimeouts(VelNet::Socket& socket, const Arguments& arguments) {
    // Where nothing is expected from the peer, it limits the end alone.
    const bool expectsBytes = arguments.direction != Direction::SendOnly;
    if (arguments.receiveTimeout && expectsBytes)
        socket.SetReceiveTimeout(*arguments.receiveTimeout);
    if (arguments.sendTimeout) socket.SetSendTimeout(*arguments.sendTimeout);
}

}  // namespace VelSockCat

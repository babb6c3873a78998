#include "Endpoint.h"

namespace VelSockCat {

std::string EndpointText(const std::string& host, unsigned short port) {
    return host + " port " + std::to_string(port);
}

VelSockTools::JsonObject MembersOf(const std::string& host, unsigned short port) {
    VelSockTools::JsonObject members;
    members.AddText("host", host);
    members.AddNumber("port", port);
    return members;
}

void AnnounceListening(const std::string& host, unsigned short port) {
    VelSockTools::Tell(
        {"listening", "listening on " + EndpointText(host, port), MembersOf(host, port)});
}

void AnnounceListening(const VelNet::Socket& classic) {
    const VelNet::SocketAddress address = classic.GetLocalAddress();
    AnnounceListening(address.GetOctets().GetAddressString().c_str(), address.GetPort());
}

void Remark(const VelSockTools::Event& event) {
    VelSockTools::Remark("velsock-cat", event);
}

void RemarkConnected(const std::string& host, const std::string& address, unsigned short port) {
    VelSockTools::JsonObject members = MembersOf(host, port);
    members.AddText("address", address);
    Remark({"connected", "connected to " + EndpointText(address, port), members});
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

#include "Endpoint.h"

#include <cstdio>

namespace VelSockCat {

void AnnounceListening(const std::string& host, unsigned short port) {
    std::fprintf(stderr, "listening on %s port %d\n", host.c_str(), int{port});
    std::fflush(stderr);
}

void AnnounceListening(const VelNet::Socket& classic) {
    const VelNet::SocketAddress address = classic.GetLocalAddress();
    AnnounceListening(address.GetOctets().GetAddressString().c_str(), address.GetPort());
}

void SetTimeouts(VelNet::Socket& socket, const Arguments& arguments) {
    if (arguments.receiveTimeout) socket.SetReceiveTimeout(*arguments.receiveTimeout);
    if (arguments.sendTimeout) socket.SetSendTimeout(*arguments.sendTimeout);
}

}  // namespace VelSockCat

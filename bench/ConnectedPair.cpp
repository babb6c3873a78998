#include "ConnectedPair.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace {

using VelNet::Octets;
using VelNet::Socket;

VelBase::ReturnPtrI<Socket> CreateStreamSocket() {
    return VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
}

int Check(int result, const char* call) {
    if (result == -1) throw std::system_error(errno, std::generic_category(), call);
    return result;
}

struct Endpoint {
    sockaddr address;
    socklen_t size = sizeof(sockaddr);
};

Endpoint AnyLoopbackPort() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    Endpoint endpoint{};
    std::memcpy(&endpoint.address, &address, sizeof(address));
    return endpoint;
}

}  // namespace

LibraryPair::LibraryPair() : client(CreateStreamSocket()) {
    const auto listener = CreateStreamSocket();
    listener->Bind(Octets(127, 0, 0, 1), 0);
    listener->Listen();
    client->Connect(Octets(127, 0, 0, 1), listener->GetLocalAddress().GetPort());
    VelNet::SocketAddress remote;
    server = listener->Accept(remote);
}

BarePair::BarePair() : client(Check(::socket(AF_INET, SOCK_STREAM, 0), "socket")) {
    const int listener = Check(::socket(AF_INET, SOCK_STREAM, 0), "socket");
    Endpoint endpoint = AnyLoopbackPort();
    Check(::bind(listener, &endpoint.address, endpoint.size), "bind");
    Check(::listen(listener, 1), "listen");
    Check(::getsockname(listener, &endpoint.address, &endpoint.size), "getsockname");
    Check(::connect(client, &endpoint.address, endpoint.size), "connect");
    server = Check(::accept(listener, nullptr, nullptr), "accept");
    ::close(listener);
}

BarePair::~BarePair() {
    ::close(client);
    ::close(server);
}

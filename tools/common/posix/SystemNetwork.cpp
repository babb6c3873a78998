#include "SystemNetwork.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "SystemAddresses.h"

namespace VelSockTools {

namespace {

using VelNet::SocketXt;

// The library's handles are the system's descriptors.
int DescriptorOf(const SocketXt& socket) {
    return static_cast<int>(socket.GetHandle());
}

VelNet::SOCKET_ERR ErrorOf(int error) {
    switch (error) {
        case EAI_NONAME:
            return VelNet::SOCKET_ERR_HOST_NOT_FOUND;
        case EAI_AGAIN:
            return VelNet::SOCKET_ERR_TRY_AGAIN;
        case EAI_NODATA:
            return VelNet::SOCKET_ERR_NO_DATA;
        default:
            return VelNet::SOCKET_ERR_NO_RECOVERY;
    }
}

void SetLinger(const SocketXt& socket, const linger& value) {
    ::setsockopt(DescriptorOf(socket), SOL_SOCKET, SO_LINGER, &value, sizeof value);
}

}  // namespace

LookUp FindAddresses(const std::string& host) {
    return FindAddressesBy(host, ErrorOf);
}

std::optional<std::string> FindName(const std::string& address) {
    return NameOf(address);
}

std::optional<unsigned short> FindServicePort(const std::string& name, bool datagrams) {
    const servent* const entry = ::getservbyname(name.c_str(), datagrams ? "udp" : "tcp");
    if (entry == nullptr) return {};
    return ntohs(static_cast<unsigned short>(entry->s_port));
}

unsigned short LocalPortOf(const SocketXt& socket) {
    const auto end = LocalEndOf(DescriptorOf(socket));
    return end ? end->port : static_cast<unsigned short>(0);
}

std::string LocalHostOf(const SocketXt& socket) {
    const auto end = LocalEndOf(DescriptorOf(socket));
    return end ? end->host : std::string();
}

bool EndSending(const SocketXt& socket) {
    return ::shutdown(DescriptorOf(socket), SHUT_WR) == 0;
}

void EndAbruptly(const SocketXt& socket) {
    SetLinger(socket, {1, 0});
}

void EndInOrder(const SocketXt& socket) {
    SetLinger(socket, {0, 0});
}

}  // namespace VelSockTools

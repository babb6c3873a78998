#include "SystemNetwork.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include "SystemAddresses.h"

namespace VelSockTools {

namespace {

using VelNet::SocketXt;

SOCKET SystemSocketOf(const SocketXt& socket) {
    return socket.GetHandle();
}

// The system's numbers are the library's.
VelNet::SOCKET_ERR ErrorOf(int error) {
    return static_cast<VelNet::SOCKET_ERR>(error);
}

void SetLinger(const SocketXt& socket, const linger& value) {
    ::setsockopt(SystemSocketOf(socket), SOL_SOCKET, SO_LINGER,
                 reinterpret_cast<const char*>(&value), sizeof value);
}

// The system tells nothing about services before it is started.
class Start {
public:
    Start() : started_(::WSAStartup(MAKEWORD(2, 2), &data_) == 0) {}
    ~Start() {
        if (started_) ::WSACleanup();
    }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;

private:
    WSADATA data_ = {};
    bool started_;
};

}  // namespace

LookUp FindAddresses(const std::string& host) {
    return FindAddressesBy(host, ErrorOf);
}

std::optional<std::string> FindName(const std::string& address) {
    return NameOf(address);
}

std::optional<unsigned short> FindServicePort(const std::string& name, bool datagrams) {
    const Start start;
    const servent* const entry = ::getservbyname(name.c_str(), datagrams ? "udp" : "tcp");
    if (entry == nullptr) return {};
    return ntohs(static_cast<unsigned short>(entry->s_port));
}

unsigned short LocalPortOf(const SocketXt& socket) {
    const auto end = LocalEndOf(SystemSocketOf(socket));
    return end ? end->port : static_cast<unsigned short>(0);
}

std::string LocalHostOf(const SocketXt& socket) {
    const auto end = LocalEndOf(SystemSocketOf(socket));
    return end ? end->host : std::string();
}

bool EndSending(const SocketXt& socket) {
    return ::shutdown(SystemSocketOf(socket), SD_SEND) == 0;
}

void EndAbruptly(const SocketXt& socket) {
    SetLinger(socket, {1, 0});
}

void EndInOrder(const SocketXt& socket) {
    SetLinger(socket, {0, 0});
}

}  // namespace VelSockTools

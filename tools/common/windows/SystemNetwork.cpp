#include "SystemNetwork.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <array>
#include <memory>

namespace VelSockTools {

namespace {

using VelNet::SocketXt;

using AddressList = std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)>;

SOCKET SystemSocketOf(const SocketXt& socket) {
    return socket.GetHandle();
}

AddressList Resolve(const std::string& host) {
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) found = nullptr;
    return {found, &::freeaddrinfo};
}

std::string NumericText(const addrinfo& entry) {
    std::array<char, NI_MAXHOST> text = {};
    ::getnameinfo(entry.ai_addr, static_cast<socklen_t>(entry.ai_addrlen), text.data(),
                  static_cast<DWORD>(text.size()), nullptr, 0, NI_NUMERICHOST);
    return text.data();
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

std::vector<HostAddress> FindAddresses(const std::string& host) {
    std::vector<HostAddress> addresses;
    const AddressList list = Resolve(host);
    for (const addrinfo* entry = list.get(); entry != nullptr; entry = entry->ai_next) {
        const bool ipv6 = entry->ai_family == AF_INET6;
        addresses.push_back(
            {ipv6 ? SocketXt::FAMILY_IPV6 : SocketXt::FAMILY_IPV4, NumericText(*entry)});
    }
    return addresses;
}

std::optional<unsigned short> FindServicePort(const std::string& name, bool datagrams) {
    const Start start;
    const servent* const entry = ::getservbyname(name.c_str(), datagrams ? "udp" : "tcp");
    if (entry == nullptr) return {};
    return ntohs(static_cast<unsigned short>(entry->s_port));
}

unsigned short LocalPortOf(const SocketXt& socket) {
    sockaddr_storage address = {};
    int length = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    if (::getsockname(SystemSocketOf(socket), any, &length) != 0) return 0;
    return ntohs(address.ss_family == AF_INET6 ? reinterpret_cast<sockaddr_in6*>(any)->sin6_port
                                               : reinterpret_cast<sockaddr_in*>(any)->sin_port);
}

bool EndSending(const SocketXt& socket) {
    return ::shutdown(SystemSocketOf(socket), SD_SEND) == 0;
}

}  // namespace VelSockTools

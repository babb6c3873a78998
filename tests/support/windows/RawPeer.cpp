#include "support/windows/WinsockCalls.h"
// Behind it.
#include <ws2tcpip.h>

#include <utility>

#include "support/RawPeer.h"

namespace Support {

namespace {

union Address {
    sockaddr any;
    sockaddr_in ipv4;
    sockaddr_in6 ipv6;
};

Address Loopback(unsigned int port) {
    Address address = {};
    address.ipv4.sin_family = AF_INET;
    address.ipv4.sin_port = htons(static_cast<u_short>(port));
    address.ipv4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

}  // namespace

RawPeer::RawPeer(RawPeer&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

RawPeer& RawPeer::operator=(RawPeer&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

RawPeer::~RawPeer() {
    Close();
}

RawPeer RawPeer::Unconnected() {
    const LastErrorKept kept;
    const SOCKET socket = ::socket(AF_INET, SOCK_STREAM, 0);
    Require(socket != INVALID_SOCKET, "socket");
    return RawPeer(static_cast<int>(socket));
}

RawPeer RawPeer::ConnectedTo(unsigned int port) {
    const LastErrorKept kept;
    RawPeer peer = Unconnected();
    const Address address = Loopback(port);
    const SOCKET socket = SocketOf(peer.descriptor_);
    Require(::connect(socket, &address.any, sizeof address.ipv4) == 0, "connect");
    return peer;
}

unsigned int RawPeer::LocalPort() const {
    return LocalPortOf(SocketOf(descriptor_));
}

void RawPeer::LimitWaiting() const {
    const LastErrorKept kept;
    Require(SetOption(SocketOf(descriptor_), SO_RCVTIMEO, DWORD{60'000}), "setsockopt");
}

void RawPeer::Send(const std::string& text) const {
    const LastErrorKept kept;
    const int length = static_cast<int>(text.size());
    Require(::send(SocketOf(descriptor_), text.data(), length, 0) == length, "send");
}

std::string RawPeer::Receive(std::size_t count) const {
    const LastErrorKept kept;
    std::string text(count, '\0');
    const int length = static_cast<int>(count);
    const int received = ::recv(SocketOf(descriptor_), text.data(), length, MSG_WAITALL);
    Require(received >= 0, "recv");
    text.resize(static_cast<std::size_t>(received));
    return text;
}

std::size_t RawPeer::ReceiveAll() const {
    std::size_t total = 0;
    char buffer[65536];
    int count = 0;
    while ((count = ::recv(SocketOf(descriptor_), buffer, sizeof buffer, 0)) > 0) {
        total += static_cast<std::size_t>(count);
    }
    return total;
}

void RawPeer::EndSending() const {
    Support::EndSending(SocketOf(descriptor_));
}

void RawPeer::Reset() {
    const LastErrorKept kept;
    Require(SetOption(SocketOf(descriptor_), SO_LINGER, linger{1, 0}), "setsockopt");
    Close();
}

void RawPeer::Close() {
    const LastErrorKept kept;
    if (descriptor_ >= 0) ::closesocket(SocketOf(std::exchange(descriptor_, -1)));
}

RawSockets::RawSockets() {
    WSADATA data;
    if (const int error = ::WSAStartup(MAKEWORD(2, 2), &data); error != 0)
        Fail("WSAStartup", static_cast<unsigned long>(error));
}

RawSockets::~RawSockets() {
    ::WSACleanup();
}

void EndSending(unsigned long long handle) {
    const LastErrorKept kept;
    Require(::shutdown(handle, SD_SEND) == 0, "shutdown");
}

unsigned int LocalPortOf(unsigned long long handle) {
    const LastErrorKept kept;
    Address address = {};
    int length = sizeof address;
    Require(::getsockname(handle, &address.any, &length) == 0, "getsockname");
    const bool isIpv6 = address.any.sa_family == AF_INET6;
    return ntohs(isIpv6 ? address.ipv6.sin6_port : address.ipv4.sin_port);
}

}  // namespace Support

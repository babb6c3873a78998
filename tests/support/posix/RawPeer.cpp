#include "support/RawPeer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace Support {

namespace {

void Require(bool done, const char* what) {
    if (!done) throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

union Address {
    sockaddr any;
    sockaddr_in ipv4;
    sockaddr_in6 ipv6;
};

Address Loopback(unsigned int port) {
    Address address = {};
    address.ipv4.sin_family = AF_INET;
    address.ipv4.sin_port = htons(static_cast<std::uint16_t>(port));
    address.ipv4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

template <class Value>
void SetOption(int descriptor, int option, const Value& value) {
    Require(::setsockopt(descriptor, SOL_SOCKET, option, &value, sizeof value) == 0, "setsockopt");
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
    RawPeer peer(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    Require(peer.descriptor_ >= 0, "socket");
    return peer;
}

RawPeer RawPeer::ConnectedTo(unsigned int port) {
    RawPeer peer = Unconnected();
    const Address address = Loopback(port);
    Require(::connect(peer.descriptor_, &address.any, sizeof address.ipv4) == 0, "connect");
    return peer;
}

unsigned int RawPeer::LocalPort() const {
    return LocalPortOf(static_cast<unsigned int>(descriptor_));
}

void RawPeer::LimitWaiting() const {
    SetOption(descriptor_, SO_RCVTIMEO, timeval{60, 0});
}

void RawPeer::Send(const std::string& text) const {
    const ssize_t count = ::send(descriptor_, text.data(), text.size(), MSG_NOSIGNAL);
    Require(count == static_cast<ssize_t>(text.size()), "send");
}

std::string RawPeer::Receive(std::size_t count) const {
    std::string text(count, '\0');
    const ssize_t received = ::recv(descriptor_, text.data(), count, MSG_WAITALL);
    Require(received >= 0, "recv");
    text.resize(static_cast<std::size_t>(received));
    return text;
}

std::size_t RawPeer::ReceiveAll() const {
    std::size_t total = 0;
    char buffer[65536];
    // A storm of signals may reach this thread as well.
    for (ssize_t count = 1; count > 0 || (count < 0 && errno == EINTR);) {
        count = ::recv(descriptor_, buffer, sizeof buffer, 0);
        if (count > 0) total += static_cast<std::size_t>(count);
    }
    return total;
}

void RawPeer::EndSending() const {
    Support::EndSending(static_cast<unsigned int>(descriptor_));
}

void RawPeer::Reset() {
    SetOption(descriptor_, SO_LINGER, linger{.l_onoff = 1, .l_linger = 0});
    Close();
}

void RawPeer::Close() {
    if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
}

RawSockets::RawSockets() = default;
RawSockets::~RawSockets() = default;

void EndSending(unsigned long long handle) {
    Require(::shutdown(static_cast<int>(handle), SHUT_WR) == 0, "shutdown");
}

unsigned int LocalPortOf(unsigned long long handle) {
    Address address = {};
    socklen_t length = sizeof address;
    Require(::getsockname(static_cast<int>(handle), &address.any, &length) == 0, "getsockname");
    const bool isIpv6 = address.any.sa_family == AF_INET6;
    return ntohs(isIpv6 ? address.ipv6.sin6_port : address.ipv4.sin_port);
}

}  // namespace Support

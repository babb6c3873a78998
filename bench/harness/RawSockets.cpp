#include "RawSockets.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace Bench {

int Checked(long result, const char* call) {
    if (result == -1) throw std::system_error(errno, std::generic_category(), call);
    return static_cast<int>(result);
}

Descriptor::~Descriptor() {
    if (number_ != -1) ::close(number_);
}

Endpoint::Endpoint(unsigned short port) noexcept : address_() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    static_assert(sizeof address == sizeof address_);
    std::memcpy(&address_, &address, sizeof address);
}

Endpoint Endpoint::Of(int descriptor) {
    Endpoint endpoint;
    socklen_t size = endpoint.Size();
    Checked(::getsockname(descriptor, endpoint.Address(), &size), "getsockname");
    return endpoint;
}

unsigned short Endpoint::Port() const noexcept {
    sockaddr_in address{};
    std::memcpy(&address, &address_, sizeof address);
    return ntohs(address.sin_port);
}

Descriptor CreateRawSocket(int type) {
    return Descriptor(Checked(::socket(AF_INET, type, 0), "socket"));
}

Descriptor CreateBoundRawSocket(int type) {
    Descriptor socket = CreateRawSocket(type);
    const Endpoint any;
    Checked(::bind(socket.Number(), any.Address(), any.Size()), "bind");
    return socket;
}

Descriptor CreateRawListener() {
    Descriptor listener = CreateBoundRawSocket(SOCK_STREAM);
    Checked(::listen(listener.Number(), 1), "listen");
    return listener;
}

Descriptor ConnectRaw(const Endpoint& listener) {
    Descriptor client = CreateRawSocket(SOCK_STREAM);
    Checked(::connect(client.Number(), listener.Address(), listener.Size()), "connect");
    return client;
}

std::vector<unsigned short> FreePorts(std::size_t count) {
    std::vector<Descriptor> holders;
    std::vector<unsigned short> ports;
    while (ports.size() < count) {
        holders.push_back(CreateBoundRawSocket(SOCK_STREAM));
        ports.push_back(Endpoint::Of(holders.back().Number()).Port());
    }
    return ports;
}

void SetRawNonBlocking(int descriptor) {
    Checked(::fcntl(descriptor, F_SETFL, O_NONBLOCK), "fcntl");
}

RawPair::RawPair() : RawPair(CreateRawListener()) {}

RawPair::RawPair(const Descriptor& listener)
    : client_(ConnectRaw(Endpoint::Of(listener.Number()))),
      server_(Checked(::accept(listener.Number(), nullptr, nullptr), "accept")) {}

void RaiseDescriptorLimit() {
    rlimit limit{};
    Checked(::getrlimit(RLIMIT_NOFILE, &limit), "getrlimit");
    limit.rlim_cur = limit.rlim_max;
    Checked(::setrlimit(RLIMIT_NOFILE, &limit), "setrlimit");
}

}  // namespace Bench

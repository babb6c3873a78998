// Bare descriptors on loopback, with nothing between them and the system. All failures throw
// std::system_error.
#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <cstddef>
#include <vector>

namespace Bench {

// Returns the result of a system call, or throws what its error number says.
int Checked(long result, const char* call);

// Owns a descriptor.
class Descriptor {
public:
    explicit Descriptor(int number = -1) noexcept : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.number_) { other.number_ = -1; }
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor();

    int Number() const noexcept { return number_; }

private:
    int number_;
};

// An IPv4 endpoint in the form that system calls take.
class Endpoint {
public:
    // On 127.0.0.1.
    explicit Endpoint(unsigned short port = 0) noexcept;

    // Where a socket is bound.
    static Endpoint Of(int descriptor);

    unsigned short Port() const noexcept;
    const sockaddr* Address() const noexcept { return &address_; }
    sockaddr* Address() noexcept { return &address_; }
    socklen_t Size() const noexcept { return sizeof address_; }

private:
    sockaddr address_;
};

// type is SOCK_STREAM or SOCK_DGRAM.
Descriptor CreateRawSocket(int type);
// One that is bound to a port of the system's choice.
Descriptor CreateBoundRawSocket(int type);
Descriptor CreateRawListener();
Descriptor ConnectRaw(const Endpoint& listener);

// So many different ports that were free for streams just now.
std::vector<unsigned short> FreePorts(std::size_t count);

void SetRawNonBlocking(int descriptor);

// Two ends of a TCP connection.
class RawPair {
public:
    RawPair();

    int Client() const noexcept { return client_.Number(); }
    int Server() const noexcept { return server_.Number(); }

private:
    explicit RawPair(const Descriptor& listener);

    Descriptor client_;
    Descriptor server_;
};

// Lets the process have as many open descriptors as the system allows.
void RaiseDescriptorLimit();

}  // namespace Bench

// Fifty clients of an echo server at once, using the system's sockets: one reads slowly, one resets
// its connection, one never reads. Checks every byte that comes back.
//
//   EchoClients PORT      of the server on 127.0.0.1
//
// Prints its results and exits with 0 only if all were right.

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr int Fast = 47;
constexpr std::size_t FastBytes = 1000003;
constexpr std::size_t SlowBytes = 300007;
constexpr int Patience = 30000;  // milliseconds without progress, on a busy host

[[noreturn]] void Fail(const std::string& text) {
    std::fprintf(stderr, "echo clients: %s\n", text.c_str());
    std::_Exit(1);
}

class Connection {
public:
    // Sets the buffer sizes, if one is given.
    explicit Connection(const char* port, int bufferSize = 0) {
        addrinfo hints{};
        hints.ai_family = AF_INET;
        hints.ai_socktype = SOCK_STREAM;
        addrinfo* found = nullptr;
        if (::getaddrinfo("127.0.0.1", port, &hints, &found) != 0) Fail("the port is none");
        const std::unique_ptr<addrinfo, void (*)(addrinfo*)> address(found, ::freeaddrinfo);
        descriptor_ = ::socket(address->ai_family, address->ai_socktype, 0);
        if (bufferSize > 0) SetBuffers(bufferSize);
        if (::connect(descriptor_, address->ai_addr, address->ai_addrlen) != 0) {
            Fail("cannot connect");
        }
    }
    ~Connection() { ::close(descriptor_); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Returns which of the events occurred; none if the time elapsed first.
    short Wait(short events, int milliseconds) const {
        pollfd request{descriptor_, events, 0};
        return ::poll(&request, 1, milliseconds) > 0 ? request.revents : short{0};
    }

    // Returns how many bytes the system took; 0 if its buffer is full or the server is gone.
    std::size_t SendSome(const char* bytes, std::size_t count) const {
        const ssize_t sent = ::send(descriptor_, bytes, count, MSG_DONTWAIT | MSG_NOSIGNAL);
        return sent > 0 ? static_cast<std::size_t>(sent) : 0;
    }

    std::size_t ReceiveSome(char* buffer, std::size_t room) const {
        const ssize_t received = ::recv(descriptor_, buffer, room, 0);
        if (received <= 0) Fail("the server has gone in the middle of an exchange");
        return static_cast<std::size_t>(received);
    }

    // Makes close reset the connection.
    void ResetAtEnd() const {
        const linger none{1, 0};
        ::setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &none, sizeof none);
    }

private:
    void SetBuffers(int size) const {
        ::setsockopt(descriptor_, SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
        ::setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
    }

    int descriptor_ = -1;
};

// Bytes that no other client sends in this order.
std::string BytesOf(unsigned int client, std::size_t count) {
    std::string bytes(count, '\0');
    unsigned int state = client * 2654435761U + 1;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24U);
    }
    return bytes;
}

// Sends and receives at the same time, at most this much at once, until everything has come
// back, and checks that it is what was sent.
class Echo {
public:
    Echo(const Connection& connection, std::string bytes, std::size_t atOnce)
        : connection_(connection), bytes_(std::move(bytes)), block_(atOnce) {}

    void RunTo(std::size_t received) {
        while (received_ < received) {
            const bool sends = sent_ < bytes_.size();
            const short events = connection_.Wait(sends ? POLLIN | POLLOUT : POLLIN, Patience);
            if (events == 0) Fail("the server does not answer");
            if ((events & POLLOUT) != 0) Send();
            if ((events & ~POLLOUT) != 0) Receive();
        }
    }

    void RunToEnd() { RunTo(bytes_.size()); }

private:
    void Send() { sent_ += connection_.SendSome(bytes_.data() + sent_, bytes_.size() - sent_); }

    void Receive() {
        const std::size_t count = connection_.ReceiveSome(block_.data(), block_.size());
        if (bytes_.compare(received_, count, block_.data(), count) != 0) Fail("a byte has changed");
        received_ += count;
    }

    const Connection& connection_;
    std::string bytes_;
    std::vector<char> block_;
    std::size_t sent_ = 0;
    std::size_t received_ = 0;
};

// Sends without reading until the server has accepted nothing for a second, which only a server
// with a limited buffer does.
void SendWithoutReading(const Connection& connection) {
    constexpr std::size_t muchTooMuch = std::size_t{256} * 1024 * 1024;
    const std::string block(65536, 'n');
    std::size_t sent = 0;
    while (connection.Wait(POLLOUT, 1000) != 0) {
        sent += connection.SendSome(block.data(), block.size());
        if (sent > muchTooMuch) Fail("the server keeps all that a client does not read");
    }
}

class Clients {
public:
    explicit Clients(const char* port)
        : port_(port),
          slow_(port, 4096),
          resetting_(std::make_unique<Connection>(port)),
          silent_(port, 65536) {
        for (int index = 0; index < Fast; ++index)
            fast_.push_back(std::make_unique<Connection>(port));
    }

    void Run() {
        Echo slow(slow_, BytesOf(Fast, SlowBytes), 512);
        slow.RunTo(1);
        std::thread neverReading([this] { SendWithoutReading(silent_); });
        EchoFast();
        std::printf("%d clients: each got its %zu bytes back\n", Fast, FastBytes);
        slow.RunToEnd();
        std::printf("a slow client: waited for those, then got its %zu bytes back\n", SlowBytes);
        neverReading.join();
        std::puts("a client that never reads: the server stopped reading from it");
        EchoAgain();
    }

private:
    void EchoFast() {
        std::vector<std::thread> threads;
        for (unsigned int index = 0; index < Fast; ++index) {
            threads.emplace_back([this, index] {
                Echo(*fast_[index], BytesOf(index, FastBytes), 65536).RunToEnd();
            });
        }
        Reset();
        for (std::thread& thread : threads)
            thread.join();
    }

    void Reset() {
        Echo(*resetting_, BytesOf(Fast + 1, 5000), 5000).RunToEnd();
        resetting_->ResetAtEnd();
        resetting_.reset();
        std::puts("a client that resets: got its 5000 bytes back and reset the connection");
    }

    // After all that, the server still accepts a new client and still serves an old one.
    void EchoAgain() {
        const Connection late(port_);
        Echo(late, BytesOf(Fast + 2, 10000), 65536).RunToEnd();
        Echo(*fast_.front(), BytesOf(Fast + 3, 10000), 65536).RunToEnd();
        std::puts("a late client and an early one: served as before");
    }

    const char* port_;
    Connection slow_;
    std::unique_ptr<Connection> resetting_;
    Connection silent_;
    std::vector<std::unique_ptr<Connection>> fast_;
};

}  // namespace

int main(int count, char** words) {
    if (count != 2) Fail("usage: EchoClients PORT");
    Clients(words[1]).Run();
}

// A peer that is no socket of the library, made with the system's bare means. Whatever fails throws
// std::runtime_error. The calling thread's last error stays as it was where the system keeps one.
#pragma once

#include <cstddef>
#include <string>

namespace Support {

// A stream socket.
class RawPeer {
public:
    RawPeer() = default;
    explicit RawPeer(int descriptor) : descriptor_(descriptor) {}
    RawPeer(RawPeer&& other) noexcept;
    RawPeer& operator=(RawPeer&& other) noexcept;
    // Closes in good order, if still open.
    ~RawPeer();

    static RawPeer Unconnected();
    // Connected to a listener on the loopback address.
    static RawPeer ConnectedTo(unsigned int port);

    int Descriptor() const { return descriptor_; }
    unsigned int LocalPort() const;

    // Receiving waits for a minute at most.
    void LimitWaiting() const;

    // The bytes must fit into the system's buffer.
    void Send(const std::string& text) const;
    // Waits for exactly that many bytes. When the connection ends before, what had come.
    std::string Receive(std::size_t count) const;
    // Reads until the other side closes, and counts.
    std::size_t ReceiveAll() const;
    // Nothing more will be sent; receiving goes on.
    void EndSending() const;
    // Closes as a crashed host does: the other side sees a reset.
    void Reset();
    void Close();

private:
    int descriptor_ = -1;
};

// The system's sockets for the length of a scope, for tests that may have no layer up. Windows has
// to start them; elsewhere they are always there.
class RawSockets {
public:
    RawSockets();
    ~RawSockets();
    RawSockets(const RawSockets&) = delete;
    RawSockets& operator=(const RawSockets&) = delete;
};

// Ends this side's half of the handle's connection, past the library, as a program may that asks
// for the handle.
void EndSending(unsigned long long handle);

// The local port that the system has given to a socket of either family.
unsigned int LocalPortOf(unsigned long long handle);

}  // namespace Support

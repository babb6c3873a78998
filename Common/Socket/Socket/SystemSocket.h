// What both socket classes do alike with their system handle.
#pragma once

#include "Platform/Winsock.h"
#include "Socket/SocketState.h"
#include "VelNet/Socket.h"

#include <typeinfo>

namespace VelNet {

// The system's numbers. A value without a name becomes 0, which lets the system choose.
int SystemTypeFrom(Socket::SOCKET_TYPE type) noexcept;
int SystemProtocolFrom(Socket::SOCKET_PROTOCOL protocol) noexcept;

// Returns whether the system accepted the change.
bool SwitchToNonBlocking(Winsock::Handle handle);

// Sets an option at the socket level to a 4-byte value; returns whether the system accepted it.
bool SetSocketOption(Winsock::Handle handle, int option, unsigned int value);

// Returns false also if the system cannot tell.
bool HasBytesAvailable(Winsock::Handle handle);

// Returns what GetStatus returns in this state. Asks a connected socket through its interface
// whether there is data to receive, so that an override counts.
int StatusOf(const Socket& socket, SocketState state);

// Returns the handle of any socket of this library, and InvalidSocket for any other implementation.
Winsock::Handle HandleOf(const Socket& socket) noexcept;

// The same, without a dynamic_cast if the socket is exactly of the given class.
template <class SocketClass>
Winsock::Handle HandleOfLikely(const Socket& socket) noexcept {
    if (typeid(socket) != typeid(SocketClass)) return HandleOf(socket);
    return static_cast<const SocketClass&>(socket).SocketClass::Handle();
}

// Closes a handle at the end of the scope unless an object has taken ownership of it.
class HandleOwner {
public:
    explicit HandleOwner(Winsock::Handle handle) noexcept : handle_(handle) {}
    ~HandleOwner();
    HandleOwner(const HandleOwner&) = delete;
    HandleOwner& operator=(const HandleOwner&) = delete;

    bool IsEmpty() const noexcept { return handle_ == Winsock::InvalidSocket; }
    Winsock::Handle Get() const noexcept { return handle_; }
    void HandOver() noexcept { handle_ = Winsock::InvalidSocket; }

private:
    Winsock::Handle handle_;
};

}  // namespace VelNet

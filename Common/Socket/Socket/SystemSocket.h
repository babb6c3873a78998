// What every family of sockets does alike with its system handle.
#pragma once

#include "Platform/Winsock.h"
#include "Socket/SocketState.h"
#include "VelNet/Socket.h"

namespace VelNet {

// The system's numbers; 0, which leaves the choice to the system, for values without a name.
int SystemTypeFrom(Socket::SOCKET_TYPE type) noexcept;
int SystemProtocolFrom(Socket::SOCKET_PROTOCOL protocol) noexcept;

// True when the system accepted the change.
bool SwitchToNonBlocking(Winsock::Handle handle);

// Sets an option of the socket itself to a 4-byte value; true when the system accepted that.
bool SetSocketOption(Winsock::Handle handle, int option, unsigned int value);

// False also when the system does not answer.
bool HasBytesAvailable(Winsock::Handle handle);

// What GetStatus answers in this state. A connected socket is asked through its interface whether
// data are pending, so that an override counts.
int StatusOf(const Socket& socket, SocketState state);

// The handle of any socket of this library; InvalidSocket for an implementation that is not ours.
Winsock::Handle HandleOf(const Socket& socket) noexcept;

// Closes a handle at the end of the scope unless an object has taken it over.
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

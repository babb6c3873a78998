#include "Socket/SystemSocket.h"

#include "Socket/OwnSocket.h"

#include <cstring>

namespace VelNet {

int SystemTypeFrom(Socket::SOCKET_TYPE type) noexcept {
    switch (type) {
        case Socket::SOCKET_STREAM:
            return Winsock::TypeStream;
        case Socket::SOCKET_DATAGRAM:
            return Winsock::TypeDatagram;
    }
    return 0;
}

int SystemProtocolFrom(Socket::SOCKET_PROTOCOL protocol) noexcept {
    switch (protocol) {
        case Socket::PROTOCOL_TCP:
            return Winsock::ProtocolTcp;
        case Socket::PROTOCOL_UDP:
            return Winsock::ProtocolUdp;
    }
    return 0;
}

bool SwitchToNonBlocking(Winsock::Handle handle) {
    unsigned int enable = 1;
    return Winsock::ioctlsocket(handle, Winsock::CommandNonBlocking, &enable) !=
           Winsock::SocketError;
}

bool SetSocketOption(Winsock::Handle handle, int option, unsigned int value) {
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    return Winsock::setsockopt(handle, Winsock::LevelSocket, option, bytes, sizeof bytes) !=
           Winsock::SocketError;
}

bool HasBytesAvailable(Winsock::Handle handle) {
    unsigned int count = 0;
    if (Winsock::ioctlsocket(handle, Winsock::CommandBytesAvailable, &count) ==
        Winsock::SocketError) {
        return false;
    }
    return count != 0;
}

int StatusOf(const Socket& socket, SocketState state) {
    if (state == STATE_CONNECTED) [[likely]]
        return socket.IsDataAvailable() ? STATUS_DATA_PENDING : STATUS_IDLE;
    return state == STATE_LISTENING ? STATUS_LISTENING : STATUS_NONE;
}

Winsock::Handle HandleOf(const Socket& socket) noexcept {
    const auto* const own = dynamic_cast<const OwnSocket*>(&socket);
    return own != nullptr ? own->Handle() : Winsock::InvalidSocket;
}

HandleOwner::~HandleOwner() {
    if (!IsEmpty()) Winsock::closesocket(handle_);
}

}  // namespace VelNet

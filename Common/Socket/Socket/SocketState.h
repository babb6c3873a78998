// The state of a socket.
#pragma once

namespace VelNet {

// Used by IsValid, GetStatus and the destructor; no operation is refused because of it.
enum SocketState : unsigned int {
    STATE_CLOSED = 0,
    STATE_CREATED = 1,
    STATE_BOUND = 2,
    STATE_LISTENING = 3,
    STATE_CONNECTED = 4,
};

}  // namespace VelNet

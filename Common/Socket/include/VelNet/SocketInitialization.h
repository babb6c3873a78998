// Brings the socket layer up and down.
#pragma once

#include <VelBase/Export.h>

namespace VelNet {

// A host process keeps one object alive around all its use of the library. The first one in the
// process brings the layer up (support libraries, log routers, Winsock 2.2), further ones only
// count, and the end of the last one brings it down. Objects may be made and ended on any thread at
// the same time.
//
// Ending the layer while sockets are open closes them below the library: end them first.
class VELSOCK_EXPORT SocketInitialization {
public:
    // Throws Exception when the system's sockets cannot be started, with the code of the number
    // that WSAStartup returned or, when another version than 2.2 came back, with
    // SOCKET_ERR_UNKNOWN. The layer then stays down and the next object tries again.
    SocketInitialization();

    // Never throws; a failure to stop the system's sockets is logged.
    ~SocketInitialization();

    SocketInitialization(const SocketInitialization&) = delete;

    // Does nothing.
    SocketInitialization& operator=(const SocketInitialization& other) noexcept;
};

}  // namespace VelNet

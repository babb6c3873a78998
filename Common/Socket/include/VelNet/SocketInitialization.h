// Brings the socket layer up and down.
#pragma once

#include "VelBase/Export.h"

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
    // SOCKET_ERR_UNKNOWN; passes on what the support libraries throw (std::bad_alloc). The layer
    // then stays down and the next object tries again.
    //
    // Required: when there is no memory for the layer's own state, nothing is thrown, the object
    // counts, and the layer stays down until the last object has ended: operations that need it
    // then fail, most with SOCKET_ERR_NOTINITIALISED.
    SocketInitialization();

    // Never throws; a failure to stop the system's sockets is logged. Each object ends once: the
    // count is not kept from going below zero.
    ~SocketInitialization();

    SocketInitialization(const SocketInitialization&) = delete;

    // Does nothing.
    SocketInitialization& operator=(const SocketInitialization& other) noexcept;
};

}  // namespace VelNet

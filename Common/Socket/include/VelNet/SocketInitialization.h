// Starts and stops the socket layer.
#pragma once

#include "VelBase/Export.h"
#include "VelNet/Exception.h"

namespace VelNet {

// Keeps the socket layer up while it exists. A process keeps one object alive around all its use of
// the library. The first object in the process starts the layer (support libraries, log routers,
// Winsock 2.2), further ones only count, and destroying the last one stops it. Objects may be
// created and destroyed on any thread at the same time.
//
// Close all sockets before the last object is destroyed: stopping the layer closes the system's
// sockets under those that are still open.
class VELSOCK_EXPORT SocketInitialization {
public:
    // Starts the layer, or counts one more user. If that throws, the layer stays down, and the next
    // object tries again.
    //
    // Required: if there is no memory for the layer's own state, nothing is thrown, the object is
    // counted, and the layer stays down until the last object is destroyed. Operations that need it
    // fail until then, most with SOCKET_ERR_NOTINITIALISED.
    //
    // Throws: Exception       the system's sockets cannot be started; the code is that of the
    //                         number that WSAStartup returned, or SOCKET_ERR_UNKNOWN if the system
    //                         offers another version than 2.2
    //         std::bad_alloc  the support libraries have no memory
    SocketInitialization();

    // Never throws; a failure to stop the system's sockets is logged. Nothing keeps the count from
    // dropping below zero: destroy each object only once.
    ~SocketInitialization();

    SocketInitialization(const SocketInitialization&) = delete;

    // Does nothing: both objects stay counted.
    SocketInitialization& operator=(const SocketInitialization& other) noexcept;
};

}  // namespace VelNet

// Starts and stops the system's sockets, together with what the library needs around them.
#pragma once

#include "Socket/SocketLayerState.h"

namespace VelNet::SocketAPI {

// Constructs the state in the given memory and starts Winsock 2.2.
//
// Throws Exception if Winsock does not start as version 2.2, and passes on what the support
// libraries throw. The memory holds no object then.
void Initialize(SocketLayerState& state);

// Stops Winsock, logs a failure of that, and destroys the state.
void Finalize(SocketLayerState& state) noexcept;

}  // namespace VelNet::SocketAPI

// Starting and stopping the system's sockets together with what the library needs around them.
#pragma once

#include "Socket/SocketLayerState.h"

namespace VelNet::SocketAPI {

// Builds the state in place, in memory that holds no object yet, and starts Winsock 2.2. When
// anything throws, nothing is left built. Throws Exception when Winsock does not start as
// version 2.2, and passes on what the support libraries throw.
void Initialize(SocketLayerState& state);

// Stops Winsock, logs it when that fails, and ends the state.
void Finalize(SocketLayerState& state) noexcept;

}  // namespace VelNet::SocketAPI

// Time limits of the command line for what the library does not limit.
#pragma once

#include <VelCompanion/Waiting.h>
#include <VelNet/Socket.h>

#include <functional>

#include "Arguments.h"

namespace VelSockCat {

// Limits the attempts to connect, all together.
class ConnectLimit {
public:
    // The limit of the command line, from now on.
    explicit ConnectLimit(const Arguments& arguments);

    // Runs connect, which connects the socket. When the time is over the socket is closed, which
    // ends the call. Throws what connect throws, and SOCKET_ERR_TIMEDOUT when the time is over.
    void Connect(VelNet::Socket& socket, const std::function<void()>& connect) const;

private:
    VelCompanion::Deadline deadline_;
};

// Waits for a connection that can be accepted. Throws Failure with TimedOut.
void AwaitConnection(VelNet::Socket& listener, const Arguments& arguments);

}  // namespace VelSockCat

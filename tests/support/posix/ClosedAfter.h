// Ends a wait that should have ended by itself.
#pragma once

#include <VelNet/Socket.h>
#include <support/posix/HelperThread.h>

#include <chrono>

namespace Support {

// Closes the socket if it has not gone before that time is over.
class ClosedAfter {
public:
    ClosedAfter(VelNet::Socket& socket, std::chrono::seconds time);

private:
    HelperThread thread_;
};

}  // namespace Support

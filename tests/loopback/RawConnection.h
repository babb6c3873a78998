// A peer of the library's sockets that the library knows nothing of.
#pragma once

#include <support/RawPeer.h>

namespace Loopback {

// A stream connection to 127.0.0.1, for which no layer need be up. Receiving from it waits for a
// minute at most.
class RawConnection : Support::RawSockets, public Support::RawPeer {
public:
    explicit RawConnection(unsigned short port) : RawPeer(ConnectedTo(port)) { LimitWaiting(); }
};

}  // namespace Loopback

// Accepts connections through either socket class.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelNet/Socket.h>

#include <memory>
#include <optional>
#include <string>

#include "Arguments.h"
#include "Events.h"

namespace VelSockCat {

// A connection that has been accepted, with its timeouts set.
struct Accepted {
    VelBase::ReturnPtrI<VelNet::Socket> socket;
    std::string host;
    std::string port;
};

class Listener {
public:
    Listener() = default;
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    virtual ~Listener() = default;

    // Waits for the next connection, at most for the time of the command line, and tells it.
    // Returns nothing if nobody has connected by then. Throws what the library throws.
    std::optional<Accepted> Accept(const Arguments& arguments);

private:
    // Accepts within a limit; the socket is empty if nobody has connected.
    virtual Accepted AcceptNext(const Arguments& arguments) = 0;

    int number_ = 0;
};

// Listens as the command line requests, and tells where. Throws Failure with NameNotResolvable or
// NotConnected, and what the library throws.
std::unique_ptr<Listener> OpenListener(const Arguments& arguments);

}  // namespace VelSockCat

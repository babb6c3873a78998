// What a datagram socket receives in addition to datagrams for the address that it is bound to.
// Only sockets that join a group or need an auxiliary socket have one.
#pragma once

#include "Platform/System.h"
#include "sockets/Broadcasts.h"
#include "sockets/GroupRequest.h"
#include "sockets/SocketTable.h"
#include "system/Descriptors.h"

#include <atomic>
#include <vector>

namespace Posix {

// A kernel socket that receives on the socket's behalf what is sent to another destination, see
// AuxiliarySockets.h.
struct AuxiliarySocket {
    Destination destination;
    Descriptor descriptor;
};
using AuxiliarySockets = std::vector<AuxiliarySocket>;

struct Reception {
    std::vector<GroupRequest> joinedItself;  // unless bound to one address
    AuxiliarySockets auxiliaries;            // kept until the socket is closed
    Descriptor pollSet;                      // of the socket and its auxiliaries
    std::atomic<int> pollSetNumber = -1;     // its number, read without the lock
};

// Protects everything but pollSetNumber.
[[gnu::visibility("hidden")]] extern constinit System::Lock receptionLock;

// Returns null if the socket has none.
Reception* FindReception(const Socket& socket) noexcept;

// Creates one if there is none; may throw std::bad_alloc.
Reception& ReceptionOf(const Socket& socket);

// Called when no call uses that descriptor's socket any more.
void CloseReception(int descriptor) noexcept;

}  // namespace Posix

// What a datagram socket receives beside what is sent to the address that it is bound to, for those
// few of which that has to be known.
#pragma once

#include "sockets/Broadcasts.h"
#include "sockets/GroupRequest.h"
#include "sockets/SocketTable.h"
#include "system/Descriptors.h"

#include <atomic>
#include <mutex>
#include <vector>

namespace Posix {

// One of the kernel's that receives for the socket what is sent to another destination, see
// AuxiliarySockets.h.
struct AuxiliarySocket {
    Destination destination;
    Descriptor descriptor;
};
using AuxiliarySockets = std::vector<AuxiliarySocket>;

struct Reception {
    std::vector<GroupRequest> joinedItself;  // while the socket is bound to all addresses, or none
    AuxiliarySockets auxiliaries;            // they stay as long as the socket, whatever it leaves
    Descriptor pollSet;                      // of the socket and its auxiliaries
    std::atomic<int> pollSetNumber = -1;     // the same for those who receive
};

// For whoever looks at more than the number of the poll set.
[[gnu::visibility("hidden")]] extern constinit std::mutex receptionLock;

// Null when the socket has none.
Reception* FindReception(const Socket& socket) noexcept;

// Makes one if there is none; may throw std::bad_alloc.
Reception& ReceptionOf(const Socket& socket);

// Called when no call uses the socket of that descriptor any more.
void CloseReception(int descriptor) noexcept;

}  // namespace Posix

// Sends and receives datagrams.
#pragma once

#include "sockets/KernelAddress.h"
#include "sockets/SocketTable.h"

namespace Posix {

// Sends to the socket's peer, or to the given one.
int SendDatagram(const Socket& socket, const char* buffer, int length,
                 const KernelAddress* peer = nullptr);

// Stores the sender unless the address is null.
int ReceiveDatagram(const Socket& socket, char* buffer, int length, void* address = nullptr,
                    int* addressLength = nullptr);

}  // namespace Posix

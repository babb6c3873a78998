// Datagrams, which arrive whole or not at all.
#pragma once

#include "sockets/KernelAddress.h"
#include "sockets/SocketTable.h"

namespace Posix {

// Sends to the socket's peer, or to another one.
int SendDatagram(const Socket& socket, const char* buffer, int length,
                 const KernelAddress* peer = nullptr);

// Tells the sender unless the address is null.
int ReceiveDatagram(const Socket& socket, char* buffer, int length, void* address = nullptr,
                    int* addressLength = nullptr);

}  // namespace Posix

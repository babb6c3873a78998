#include <Platform/Winsock.h>

#include "errors/Errors.h"
#include "sockets/SocketTable.h"

using namespace Posix;

int Winsock::closesocket(Handle handle) {
    const Socket socket = FindSocket(handle);
    if (!socket) return SocketError;
    CloseSocket(socket);
    return Succeed();
}

#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "sockets/SocketTable.h"

#include <utility>

using namespace Posix;

int Winsock::closesocket(Handle handle) {
    Socket socket = FindSocket(handle);
    if (!socket) return SocketError;
    return CloseSocket(std::move(socket)) ? Succeed() : Fail(WinsockError::NotSocket);
}

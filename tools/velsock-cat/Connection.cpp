#include "Connection.h"

#include "ClassicSocket.h"
#include "Endpoint.h"
#include "ExtendedSocket.h"

namespace VelSockCat {

namespace {

using VelBase::ReturnPtrI;
using VelNet::Socket;
using VelNet::SocketXt;

// Both functions close the listening socket when they return: only one connection is served.
ReturnPtrI<Socket> AcceptClassic(const Arguments& arguments) {
    const auto listener = BindClassic(Kind::Stream, arguments);
    listener->Listen();
    AnnounceListening(*listener);
    VelNet::SocketAddress remote;
    return listener->Accept(remote);
}

ReturnPtrI<Socket> AcceptExtended(const Arguments& arguments) {
    const auto listener = CreateExtended(Kind::Stream, arguments);
    BindExtended(*listener, arguments);
    listener->Listen();
    AnnounceListening(
        arguments.host.value_or(SpecialAddressOf(*listener, VelNet::SPECIAL_LOOPBACK)),
        arguments.port);
    ReturnPtrI<SocketXt> socket;
    VelBase::ReturnString host;
    VelBase::ReturnString port;
    return listener->Accept(socket, host, port).Get();
}

ReturnPtrI<Socket> ConnectExtended(const Arguments& arguments) {
    const auto socket = CreateExtended(Kind::Stream, arguments);
    ConnectExtended(*socket, arguments);
    return socket.Get();
}

ReturnPtrI<Socket> Open(const Arguments& arguments) {
    const bool connects = arguments.command == Command::Connect;
    if (arguments.Family() == SocketFamily::Classic) {
        return connects ? ConnectClassic(Kind::Stream, arguments) : AcceptClassic(arguments);
    }
    return connects ? ConnectExtended(arguments) : AcceptExtended(arguments);
}

}  // namespace

ReturnPtrI<Socket> OpenConnection(const Arguments& arguments) {
    auto socket = Open(arguments);
    SetTimeouts(*socket, arguments);
    return socket;
}

}  // namespace VelSockCat

#include "Connection.h"

#include <VelCompanion/Connecting.h>

#include <string>

#include "ClassicSocket.h"
#include "Endpoint.h"
#include "ExtendedSocket.h"
#include "Limits.h"
#include "SystemNetwork.h"

namespace VelSockCat {

namespace {

using VelBase::ReturnPtrI;
using VelNet::Socket;
using VelNet::SocketXt;

[[noreturn]] void ThrowNobodyConnected(const Arguments& arguments) {
    throw VelSockTools::Failure(
        VelSockTools::ExitCode::TimedOut,
        "nobody has connected within " + std::to_string(*arguments.acceptTimeout) + " ms");
}

// Both functions close the listening socket when they return: only one connection is served.
ReturnPtrI<Socket> AcceptClassic(const Arguments& arguments) {
    const auto listener = BindClassic(Kind::Stream, arguments);
    AnnounceListening(*listener);
    VelNet::SocketAddress remote;
    auto socket = VelCompanion::AcceptWithin(*listener, remote, LimitOf(arguments.acceptTimeout));
    if (!socket) ThrowNobodyConnected(arguments);
    Remark("connection from " +
           EndpointText(remote.GetOctets().GetAddressString().c_str(), remote.GetPort()));
    return socket;
}

ReturnPtrI<Socket> AcceptExtended(const Arguments& arguments) {
    const auto listener = CreateExtended(Kind::Stream, arguments);
    const std::string bound = BindExtended(*listener, arguments);
    AnnounceListening(bound, VelSockTools::LocalPortOf(*listener));
    VelBase::ReturnString host;
    VelBase::ReturnString port;
    const auto socket =
        VelCompanion::AcceptWithin(*listener, host, port, LimitOf(arguments.acceptTimeout));
    if (!socket) ThrowNobodyConnected(arguments);
    Remark(std::string("connection from ") + host.c_str() + " port " + port.c_str());
    return socket.Get();
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

// The command connect.
#include <VelBase/ReturnPtrI.h>

#include <chrono>

#include "ClassicSocket.h"
#include "Commands.h"
#include "Endpoint.h"
#include "Exchange.h"
#include "ExtendedSocket.h"

namespace VelSockCat {

namespace {

using VelBase::ReturnPtrI;
using VelNet::Socket;

ReturnPtrI<Socket> OpenConnection(const Arguments& arguments, Traffic& traffic) {
    if (arguments.Family() == SocketFamily::Classic)
        return ConnectClassic(Kind::Stream, arguments, &traffic);
    const auto socket = CreateExtended(Kind::Stream, arguments);
    ConnectExtended(*socket, arguments, traffic);
    return socket.Get();
}

}  // namespace

VelSockTools::ExitCode Connect(const Arguments& arguments) {
    Traffic traffic(arguments);
    const auto socket = OpenConnection(arguments, traffic);
    SetTimeouts(*socket, arguments);
    Exchange(*socket, arguments, traffic);
    return VelSockTools::ExitCode::InOrder;
}

}  // namespace VelSockCat

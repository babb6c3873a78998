#include "ExtendedSocket.h"

namespace VelSockCat {

namespace {

using VelBase::ReturnPtrI;
using VelNet::Socket;
using VelNet::SocketXt;
using VelSockTools::ExitCode;
using VelSockTools::Failure;

// The system's errors for an address of the other version.
bool IsOtherVersion(const VelNet::Exception& exception) {
    return exception.GetErrorCode() == VelNet::SOCKET_ERR_FAULT ||
           exception.GetErrorCode() == VelNet::SOCKET_ERR_AFNOSUPPORT;
}

}  // namespace

ReturnPtrI<SocketXt> CreateExtended(Kind kind) {
    return kind == Kind::Stream
               ? VelNet::CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP)
               : VelNet::CreateSocketXt(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP);
}

void ConnectExtended(SocketXt& socket, const Arguments& arguments) {
    try {
        socket.Connect(arguments.host->c_str(), std::to_string(arguments.port).c_str());
    } catch (const VelNet::Exception& exception) {
        throw OpeningFailure(socket, exception);
    }
}

void BindExtended(SocketXt& socket, const Arguments& arguments) {
    const std::string port = std::to_string(arguments.port);
    try {
        if (arguments.reuseAddress) socket.SetReuseAddress();
        if (arguments.host) {
            socket.Bind(arguments.host->c_str(), port.c_str());
        } else {
            socket.Bind(VelNet::SPECIAL_LOOPBACK, port.c_str());
        }
    } catch (const VelNet::Exception& exception) {
        throw OpeningFailure(socket, exception);
    }
}

std::string SpecialAddressOf(const SocketXt& socket, VelNet::SpecialAddressKind kind) {
    return socket.GetSpecialAddress(kind, socket.GetAddressFamily()).c_str();
}

std::string RemarkOnVersion(const SocketXt& socket, const VelNet::Exception& exception) {
    if (!IsOtherVersion(exception)) return "";
    if (socket.GetAddressFamily() == SocketXt::FAMILY_IPV6) {
        return "; the socket speaks IPv6 because the first address of this computer's name does; "
               "--classic speaks IPv4";
    }
    return "; the socket speaks IPv4 because the first address of this computer's name does";
}

Failure OpeningFailure(const SocketXt& socket, const VelNet::Exception& exception) {
    const bool notResolved = VelSockTools::IsNotResolved(exception);
    return {notResolved ? ExitCode::NameNotResolvable : ExitCode::NotConnected, exception,
            RemarkOnVersion(socket, exception)};
}

}  // namespace VelSockCat

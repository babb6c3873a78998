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

ReturnPtrI<SocketXt> CreateExtended(Kind kind, const Arguments& arguments) {
    const bool stream = kind == Kind::Stream;
    return VelNet::CreateSocketXt(stream ? Socket::SOCKET_STREAM : Socket::SOCKET_DATAGRAM,
                                  stream ? Socket::PROTOCOL_TCP : Socket::PROTOCOL_UDP,
                                  arguments.version);
}

void ConnectExtended(SocketXt& socket, const Arguments& arguments) {
    try {
        socket.Connect(arguments.host->c_str(), std::to_string(arguments.port).c_str());
    } catch (const VelNet::Exception& exception) {
        throw OpeningFailure(socket, exception, arguments);
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
        throw OpeningFailure(socket, exception, arguments);
    }
}

std::string SpecialAddressOf(const SocketXt& socket, VelNet::SpecialAddressKind kind) {
    return socket.GetSpecialAddress(kind, socket.GetAddressFamily()).c_str();
}

std::string RemarkOnVersion(const SocketXt& socket, const VelNet::Exception& exception,
                            const Arguments& arguments) {
    if (!IsOtherVersion(exception)) return "";
    const bool ipv6 = socket.GetAddressFamily() == SocketXt::FAMILY_IPV6;
    const std::string remark = ipv6 ? "; the socket speaks IPv6" : "; the socket speaks IPv4";
    if (arguments.version != SocketXt::FAMILY_UNKNOWN) return remark;
    return remark + " because the first address of this computer's name does; " +
           (ipv6 ? "-4 chooses IPv4" : "-6 chooses IPv6");
}

Failure OpeningFailure(const SocketXt& socket, const VelNet::Exception& exception,
                       const Arguments& arguments) {
    const bool notResolved = VelSockTools::IsNotResolved(exception);
    return {notResolved ? ExitCode::NameNotResolvable : ExitCode::NotConnected, exception,
            RemarkOnVersion(socket, exception, arguments)};
}

}  // namespace VelSockCat

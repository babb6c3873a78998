#include "ExtendedSocket.h"

#include <VelCompanion/Connecting.h>

#include "Endpoint.h"
#include "Limits.h"
#include "Transfer.h"

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
    try {
        return VelNet::CreateSocketXt(stream ? Socket::SOCKET_STREAM : Socket::SOCKET_DATAGRAM,
                                      stream ? Socket::PROTOCOL_TCP : Socket::PROTOCOL_UDP,
                                      arguments.version);
    } catch (const VelNet::Exception& exception) {
        throw Failure(ExitCode::NotConnected, "cannot create a socket", exception);
    }
}

void ConnectExtended(SocketXt& socket, const Arguments& arguments, Traffic& traffic) {
    const std::string port = std::to_string(arguments.port);
    const VelCompanion::Deadline deadline(LimitOf(arguments.connectTimeout));
    std::string tried;
    const auto connect = [&](const std::string& address) {
        tried = address;
        const Stopwatch stopwatch;
        VelCompanion::ConnectWithin(socket, address, port, LeftOf(deadline));
        traffic.Begin(stopwatch.Elapsed());
    };
    const auto refusal =
        TryEach(AddressesFor(socket, *arguments.host, deadline), connect, deadline);
    if (!refusal) return RemarkConnected(*arguments.host, tried, arguments.port);
    throw OpeningFailure("cannot connect to " + EndpointText(*arguments.host, arguments.port),
                         socket, *refusal, arguments);
}

std::string BindExtended(SocketXt& socket, Kind kind, const Arguments& arguments) {
    std::string host = arguments.host.value_or(SpecialAddressOf(socket, VelNet::SPECIAL_LOOPBACK));
    const std::string port = std::to_string(arguments.port);
    const Addresses addresses = AddressesFor(socket, host, NoDeadline());
    const auto refusal = TryEach(addresses, [&](const std::string& address) {
        if (arguments.reuseAddress) socket.SetReuseAddress();
        socket.Bind(address.c_str(), port.c_str());
        if (kind == Kind::Stream) socket.Listen();
    });
    if (!refusal) return host;
    throw OpeningFailure("cannot listen on " + EndpointText(host, arguments.port), socket, *refusal,
                         arguments);
}

std::string ReasonFor(const SocketXt& socket, const VelNet::Exception& exception,
                      const Arguments& arguments) {
    if (!IsOtherVersion(exception)) return VelSockTools::ReasonOf(exception);
    const bool ipv6 = socket.GetAddressFamily() == SocketXt::FAMILY_IPV6;
    const std::string version = ipv6 ? "IPv6" : "IPv4";
    std::string reason = "no " + version + " address of it can be used " +
                         VelSockTools::NumberOf(exception) + "; the socket speaks " + version;
    if (arguments.version != SocketXt::FAMILY_UNKNOWN) return reason;
    return reason + " because the first address of this computer's name does; " +
           (ipv6 ? "-4 chooses IPv4" : "-6 chooses IPv6");
}

Failure OpeningFailure(const std::string& what, const SocketXt& socket, const Refusal& refusal,
                       const Arguments& arguments) {
    const std::string reason = ReasonFor(socket, refusal.last, arguments);
    return Failure(OpeningCodeOf(refusal.last), what, refusal.last, reason).With(refusal.attempts);
}

}  // namespace VelSockCat

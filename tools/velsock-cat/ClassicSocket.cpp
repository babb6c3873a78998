#include "ClassicSocket.h"

#include <VelCompanion/Connecting.h>
#include <VelNet/SocketAddress.h>

#include <string>
#include <vector>

#include "Addresses.h"
#include "Endpoint.h"
#include "Failure.h"
#include "Limits.h"
#include "Transfer.h"
#include "Within.h"

namespace VelSockCat {

namespace {

using VelBase::ReturnPtrI;
using VelNet::Octets;
using VelNet::Socket;
using VelNet::SocketAddress;
using VelSockTools::ExitCode;
using VelSockTools::Failure;

bool LooksDotted(const std::string& host) {
    return host.find('.') != std::string::npos &&
           host.find_first_not_of("0123456789.") == std::string::npos;
}

std::vector<std::string> LookUp(const std::string& host) {
    const auto text = [](const Octets& octets) {
        return std::string(octets.GetAddressString().c_str());
    };
    if (LooksDotted(host)) return {text(SocketAddress::ConvertDottedStringToOctets(host.c_str()))};
    const auto found = SocketAddress::GetOctetsFromMachineName(host.c_str());
    std::vector<std::string> addresses;
    for (unsigned int index = 0; index < found->GetCount(); ++index)
        addresses.push_back(text(found->GetOctets(index)));
    return addresses;
}

[[noreturn]] void ThrowLate(const std::string& what) {
    throw Failure(ExitCode::TimedOut, what + ": the name was not looked up in time");
}

// What cannot be done if that fails, is the beginning of the failure's text.
Addresses Resolve(const std::string& host, const std::string& what,
                  const VelCompanion::Deadline& deadline) {
    try {
        const auto found = Within(deadline, [host] { return LookUp(host); });
        if (!found) ThrowLate(what);
        return {*found, {}, {}};
    } catch (const VelNet::Exception& exception) {
        throw Failure(ExitCode::NameNotResolvable, what, exception);
    }
}

Octets OctetsOf(const std::string& address) {
    return SocketAddress::ConvertDottedStringToOctets(address.c_str());
}

ReturnPtrI<Socket> Create(Kind kind) {
    return kind == Kind::Stream
               ? VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP)
               : VelNet::CreateSocket(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP);
}

}  // namespace

ReturnPtrI<Socket> ConnectClassic(Kind kind, const Arguments& arguments, Traffic* traffic) {
    const std::string what = "cannot connect to " + EndpointText(*arguments.host, arguments.port);
    const VelCompanion::Deadline deadline(LimitOf(arguments.connectTimeout));
    const Addresses addresses = Resolve(*arguments.host, what, deadline);
    ReturnPtrI<Socket> socket;
    std::string tried;
    const auto connect = [&](const std::string& address) {
        tried = address;
        socket = Create(kind);
        const Stopwatch stopwatch;
        VelCompanion::ConnectWithin(*socket, OctetsOf(address), arguments.port, LeftOf(deadline));
        if (traffic != nullptr) traffic->Begin(stopwatch.Elapsed());
    };
    const auto refusal = TryEach(addresses, connect, deadline);
    if (refusal) throw OpeningFailure(what, *refusal);
    RemarkConnected(*arguments.host, tried, arguments.port);
    return socket;
}

ReturnPtrI<Socket> BindClassic(Kind kind, const Arguments& arguments) {
    const std::string host = arguments.host.value_or("127.0.0.1");
    const std::string what = "cannot listen on " + EndpointText(host, arguments.port);
    Addresses addresses = Resolve(host, what, NoDeadline());
    addresses.usable.resize(1);
    auto socket = Create(kind);
    const auto refusal = TryEach(addresses, [&](const std::string& address) {
        if (arguments.reuseAddress) socket->SetReuseAddress();
        socket->Bind(OctetsOf(address), arguments.port);
        if (kind == Kind::Stream) socket->Listen();
    });
    if (refusal) throw OpeningFailure(what, *refusal);
    return socket;
}

}  // namespace VelSockCat

#include "ClassicSocket.h"

#include <VelNet/SocketAddress.h>

#include <string>
#include <vector>

#include "Failure.h"

namespace VelSockCat {

namespace {

using VelBase::ReturnPtrI;
using VelNet::Octets;
using VelNet::Socket;
using VelNet::SocketAddress;

bool LooksDotted(const std::string& host) {
    return host.find('.') != std::string::npos &&
           host.find_first_not_of("0123456789.") == std::string::npos;
}

std::vector<Octets> LookUp(const std::string& host) {
    if (LooksDotted(host)) return {SocketAddress::ConvertDottedStringToOctets(host.c_str())};
    const auto found = SocketAddress::GetOctetsFromMachineName(host.c_str());
    std::vector<Octets> addresses;
    for (unsigned int index = 0; index < found->GetCount(); ++index) {
        addresses.push_back(found->GetOctets(index));
    }
    return addresses;
}

std::vector<Octets> Resolve(const std::optional<std::string>& host) {
    if (!host) return {Octets(127, 0, 0, 1)};
    try {
        return LookUp(*host);
    } catch (const VelNet::Exception& exception) {
        throw VelSockTools::Failure(VelSockTools::ExitCode::NameNotResolvable, exception);
    }
}

ReturnPtrI<Socket> Create(Kind kind) {
    return kind == Kind::Stream
               ? VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP)
               : VelNet::CreateSocket(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP);
}

ReturnPtrI<Socket> ConnectTo(Kind kind, const Octets& address, unsigned short port) {
    auto socket = Create(kind);
    socket->Connect(address, port);
    return socket;
}

}  // namespace

// Resolve returns at least one address.
ReturnPtrI<Socket> ConnectClassic(Kind kind, const Arguments& arguments) {
    const std::vector<Octets> addresses = Resolve(arguments.host);
    for (auto address = addresses.begin();; ++address) {
        try {
            return ConnectTo(kind, *address, arguments.port);
        } catch (const VelNet::Exception&) {
            if (address + 1 == addresses.end()) throw;
        }
    }
}

ReturnPtrI<Socket> BindClassic(Kind kind, const Arguments& arguments) {
    const std::vector<Octets> addresses = Resolve(arguments.host);
    auto socket = Create(kind);
    if (arguments.reuseAddress) socket->SetReuseAddress();
    socket->Bind(addresses.front(), arguments.port);
    return socket;
}

}  // namespace VelSockCat

#include "Connection.h"

#include <VelNet/SocketAddress.h>

#include <cstdio>
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

std::vector<Octets> Resolve(const std::string& host) {
    try {
        return LookUp(host);
    } catch (const VelNet::Exception& exception) {
        throw Failure(ExitCode::NameNotResolvable, exception);
    }
}

ReturnPtrI<Socket> CreateStreamSocket() {
    return VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
}

ReturnPtrI<Socket> ConnectTo(const Octets& address, unsigned short port) {
    auto socket = CreateStreamSocket();
    socket->Connect(address, port);
    return socket;
}

// Resolve gives at least one address. When none answers, the last one's failure is told.
ReturnPtrI<Socket> ConnectToFirst(const std::vector<Octets>& addresses, unsigned short port) {
    for (auto address = addresses.begin();; ++address) {
        try {
            return ConnectTo(*address, port);
        } catch (const VelNet::Exception&) {
            if (address + 1 == addresses.end()) throw;
        }
    }
}

// Scripts read the port from this line.
void AnnounceListening(const SocketAddress& address) {
    const auto text = address.GetOctets().GetAddressString();
    std::fprintf(stderr, "listening on %s port %d\n", text.c_str(), int{address.GetPort()});
    std::fflush(stderr);
}

// The listening socket ends with this function: one connection is all that is served.
ReturnPtrI<Socket> AcceptOne(const Octets& address, unsigned short port) {
    auto listener = CreateStreamSocket();
    listener->Bind(address, port);
    listener->Listen();
    AnnounceListening(listener->GetLocalAddress());
    SocketAddress remote;
    return listener->Accept(remote);
}

ReturnPtrI<Socket> Open(const Arguments& arguments) {
    const std::vector<Octets> addresses = Resolve(arguments.host);
    if (arguments.command == Command::Connect) return ConnectToFirst(addresses, arguments.port);
    return AcceptOne(addresses.front(), arguments.port);
}

}  // namespace

ReturnPtrI<Socket> OpenConnection(const Arguments& arguments) {
    try {
        auto socket = Open(arguments);
        if (arguments.receiveTimeout) socket->SetReceiveTimeout(*arguments.receiveTimeout);
        if (arguments.sendTimeout) socket->SetSendTimeout(*arguments.sendTimeout);
        return socket;
    } catch (const VelNet::Exception& exception) {
        throw Failure(ExitCode::NotConnected, exception);
    }
}

}  // namespace VelSockCat

#include "Target.h"

#include <VelBase/TextConversions.h>
#include <VelCompanion/Connecting.h>

#include "Endpoint.h"
#include "Limits.h"
#include "Transfer.h"

namespace VelSockCat {

namespace {

using VelNet::Socket;
using VelNet::SocketXt;

SocketXt::ADDR_FAMILY VersionOf(const std::string& address) {
    return address.find(':') == std::string::npos ? SocketXt::FAMILY_IPV4 : SocketXt::FAMILY_IPV6;
}

const char* NameOf(SocketXt::ADDR_FAMILY version) {
    return version == SocketXt::FAMILY_IPV6 ? "IPv6" : "IPv4";
}

VelBase::ReturnPtrI<SocketXt> CreateFor(Kind kind, const std::string& address) {
    const bool stream = kind == Kind::Stream;
    return VelNet::CreateSocketXt(stream ? Socket::SOCKET_STREAM : Socket::SOCKET_DATAGRAM,
                                  stream ? Socket::PROTOCOL_TCP : Socket::PROTOCOL_UDP,
                                  VersionOf(address));
}

VelNet::Exception NoneOf(SocketXt::ADDR_FAMILY version, const std::string& host) {
    const std::string text = std::string("There is no ") + NameOf(version) + " address of " + host;
    return {VelBase::UTF8ToWideChar(text.c_str(), false).c_str(), VelNet::SOCKET_ERR_NO_DATA};
}

}  // namespace

Addresses AddressesOf(const std::string& host, SocketXt::ADDR_FAMILY version,
                      const VelCompanion::Deadline& deadline) {
    const LookedUp found = LookUpWithin(host, deadline);
    Addresses addresses = {{}, {}, found.failure};
    for (const VelSockTools::HostAddress& address : found.addresses) {
        if (version == SocketXt::FAMILY_UNKNOWN || version == address.family)
            addresses.usable.push_back(address.text);
    }
    if (addresses.usable.empty() && !found.failure) addresses.failure = NoneOf(version, host);
    return addresses;
}

Connected ConnectToAny(Kind kind, const Addresses& addresses, const std::string& host,
                       unsigned short port, const VelCompanion::Deadline& deadline) {
    Connected connected;
    const auto connect = [&](const std::string& address) {
        connected.socket = CreateFor(kind, address);
        connected.address = address;
        const Stopwatch stopwatch;
        VelCompanion::ConnectWithin(*connected.socket, address, std::to_string(port),
                                    LeftOf(deadline));
        connected.connecting = stopwatch.Elapsed();
    };
    const auto refusal = TryEach(addresses, connect, deadline);
    if (refusal) throw OpeningFailure("cannot connect to " + EndpointText(host, port), *refusal);
    return connected;
}

}  // namespace VelSockCat

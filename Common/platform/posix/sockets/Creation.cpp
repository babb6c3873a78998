#include <Platform/Winsock.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "errors/Errors.h"
#include "sockets/BooleanOption.h"
#include "sockets/SocketTable.h"
#include "sockets/StartUp.h"

namespace {

using namespace Posix;

int TypeFromProtocol(int protocol) {
    return protocol == Winsock::ProtocolUdp ? Winsock::TypeDatagram : Winsock::TypeStream;
}

int ProtocolOfType(int type) {
    return type == Winsock::TypeDatagram ? Winsock::ProtocolUdp : Winsock::ProtocolTcp;
}

// The order of the tests decides which of several mistakes is reported.
int CreationError(int family, int type, int protocol) {
    if (family == 0 && protocol == 0) return WinsockError::Invalid;
    if (type != Winsock::TypeStream && type != Winsock::TypeDatagram) {
        return WinsockError::SocketTypeNotSupported;
    }
    if (family != Winsock::FamilyIpv4 && family != Winsock::FamilyIpv6) {
        return WinsockError::AddressFamilyNotSupported;
    }
    const bool fits = protocol == 0 || protocol == ProtocolOfType(type);
    return fits ? 0 : WinsockError::ProtocolNotSupported;
}

// Winsock's datagram sockets are told of unreachable peers, and receive from those groups only that
// they have joined themselves.
void GiveDatagramDefaults(int descriptor, bool ipv6) {
    const int level = ipv6 ? IPPROTO_IPV6 : IPPROTO_IP;
    SetBooleanOption(descriptor, level, ipv6 ? IPV6_RECVERR : IP_RECVERR, true);
    SetBooleanOption(descriptor, level, ipv6 ? IPV6_MULTICAST_ALL : IP_MULTICAST_ALL, false);
}

// Winsock's IPv6 sockets do not take IPv4 traffic.
void GiveWinsockDefaults(int descriptor, bool ipv6, bool datagram) {
    if (ipv6) SetBooleanOption(descriptor, IPPROTO_IPV6, IPV6_V6ONLY, true);
    if (datagram) GiveDatagramDefaults(descriptor, ipv6);
}

}  // namespace

Winsock::Handle Winsock::socket(int family, int type, int protocol) {
    if (!RequireStarted()) return InvalidSocket;
    if (type == 0) type = TypeFromProtocol(protocol);
    if (const int error = CreationError(family, type, protocol)) {
        Fail(error);
        return InvalidSocket;
    }
    const bool ipv6 = family == FamilyIpv6;
    const bool datagram = type == TypeDatagram;
    const int descriptor = ::socket(ipv6 ? AF_INET6 : AF_INET,
                                    (datagram ? SOCK_DGRAM : SOCK_STREAM) | SOCK_CLOEXEC, 0);
    if (descriptor >= 0) GiveWinsockDefaults(descriptor, ipv6, datagram);
    return AdoptDescriptor(descriptor, (ipv6 ? Flag::Ipv6 : 0U) | (datagram ? Flag::Datagram : 0U));
}

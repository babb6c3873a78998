#include "sockets/Creation.h"

#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "sockets/AddressFamily.h"
#include "sockets/SocketTable.h"
#include "sockets/StartUp.h"
#include "system/Descriptors.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <iterator>

namespace {

using namespace Posix;

int TypeFromProtocol(int protocol) {
    return protocol == Winsock::ProtocolUdp ? Winsock::TypeDatagram : Winsock::TypeStream;
}

int ProtocolOfType(int type) {
    return type == Winsock::TypeDatagram ? Winsock::ProtocolUdp : Winsock::ProtocolTcp;
}

// The order of the checks decides which of several errors is reported.
WinsockError CreationError(int family, int type, int protocol) {
    if (family == 0 && protocol == 0) return WinsockError::Invalid;
    if (type != Winsock::TypeStream && type != Winsock::TypeDatagram) {
        return WinsockError::SocketTypeNotSupported;
    }
    if (FamilyFromWinsock(family) == nullptr) return WinsockError::AddressFamilyNotSupported;
    const bool fits = protocol == 0 || protocol == ProtocolOfType(type);
    return fits ? WinsockError::None : WinsockError::ProtocolNotSupported;
}

// A socket option for all sockets of a family, or for its datagram sockets only.
struct Default {
    bool datagramsOnly;
    int level;
    int option;
    int value;
};

// The options in which Winsock's defaults differ from the kernel's.
constexpr Default Defaults[] = {
    // IPv6 sockets do not accept IPv4 traffic.
    {false, IPPROTO_IPV6, IPV6_V6ONLY, 1},
    // Datagram sockets learn of unreachable peers.
    {true, IPPROTO_IP, IP_RECVERR, 1},
    {true, IPPROTO_IPV6, IPV6_RECVERR, 1},
    // They receive only from groups that they have joined themselves.
    {true, IPPROTO_IP, IP_MULTICAST_ALL, 0},
    {true, IPPROTO_IPV6, IPV6_MULTICAST_ALL, 0},
    // Routers may fragment packets that are too long for a link. IPv6 routers never do.
    {true, IPPROTO_IP, IP_MTU_DISCOVER, IP_PMTUDISC_DONT},
};

constexpr bool Applies(const Default& given, bool ipv6, bool datagram) noexcept {
    return (given.level == IPPROTO_IPV6) == ipv6 && (datagram || !given.datagramsOnly);
}

// A stream of IPv4 is not worth a look at the table.
static_assert(std::none_of(std::begin(Defaults), std::end(Defaults),
                           [](const Default& given) { return Applies(given, false, false); }));

// Returns false with errno if the kernel refuses one of them.
bool GiveDefaults(int descriptor, bool ipv6, bool datagram) {
    if (!ipv6 && !datagram) return true;
    return std::all_of(std::begin(Defaults), std::end(Defaults), [&](const Default& given) {
        const int value = given.value;
        return !Applies(given, ipv6, datagram) ||
               ::setsockopt(descriptor, given.level, given.option, &value, sizeof value) == 0;
    });
}

}  // namespace

int Posix::MakeDescriptor(bool ipv6, bool datagram) {
    Descriptor made(
        ::socket(IpFamily(ipv6).kernel, (datagram ? SOCK_DGRAM : SOCK_STREAM) | SOCK_CLOEXEC, 0));
    if (!made || !GiveDefaults(made.Number(), ipv6, datagram)) return -1;
    return made.Take();
}

Winsock::Handle Winsock::socket(int family, int type, int protocol) {
    if (!RequireStarted()) return InvalidSocket;
    if (type == 0) type = TypeFromProtocol(protocol);
    if (const auto error = CreationError(family, type, protocol); IsError(error)) {
        Fail(error);
        return InvalidSocket;
    }
    const bool ipv6 = family == FamilyIpv6;
    const bool datagram = type == TypeDatagram;
    return AdoptDescriptor(MakeDescriptor(ipv6, datagram),
                           (ipv6 ? Flag::Ipv6 : 0U) | (datagram ? Flag::Datagram : 0U));
}

#include "Socket/AddressList.h"
#include "Socket/SocketXtFailure.h"
#include "Socket/SocketXtImpl.h"
#include "Socket/SocketXtTexts.h"
#include "Socket/SystemSocket.h"
#include "Socket/WinsockScope.h"

namespace VelNet {

namespace {

constexpr const char* Function = "VelNet::CreateSocketXt";

// No system has a family of this number; 0 means any family to some.
constexpr int NoFamily = -1;

SocketXt::ADDR_FAMILY FamilyFrom(int systemFamily) noexcept {
    switch (systemFamily) {
        case Winsock::FamilyIpv4:
            return SocketXt::FAMILY_IPV4;
        case Winsock::FamilyIpv6:
            return SocketXt::FAMILY_IPV6;
        default:
            return SocketXt::FAMILY_UNKNOWN;
    }
}

int SystemFamilyFrom(SocketXt::ADDR_FAMILY family) noexcept {
    switch (family) {
        case SocketXt::FAMILY_IPV4:
            return Winsock::FamilyIpv4;
        case SocketXt::FAMILY_IPV6:
            return Winsock::FamilyIpv6;
        default:
            return NoFamily;
    }
}

[[noreturn]] void ThrowNotCreated(const char* call, int error) {
    ThrowSocketXtError({Function, "cannot create a socket", call, error});
}

// Takes ownership of the handle.
VelBase::ReturnPtrI<SocketXt> NewSocket(Winsock::Handle made, int type, int protocol,
                                        SocketXt::ADDR_FAMILY family) {
    HandleOwner handle(made);
    auto* const socket = new SocketXtImpl(handle.Get(), STATE_CREATED, type, protocol, family);
    handle.HandOver();
    return {socket};
}

}  // namespace

VelBase::ReturnPtrI<SocketXt> CreateSocketXt(Socket::SOCKET_TYPE type,
                                             Socket::SOCKET_PROTOCOL protocol) {
    const WinsockScope scope(Function);
    const int systemType = SystemTypeFrom(type);
    const int systemProtocol = SystemProtocolFrom(protocol);

    Winsock::Handle made = Winsock::InvalidSocket;
    SocketXt::ADDR_FAMILY family = SocketXt::FAMILY_UNKNOWN;
    const AddressWalk walk = TryAddresses(
        NarrowComputerName().c_str(), nullptr, AddressHints(systemType, systemProtocol),
        [&](const Winsock::AddressInfo& entry) {
            made = Winsock::socket(entry.family, systemType, systemProtocol);
            family = FamilyFrom(entry.family);
            return made != Winsock::InvalidSocket;
        });
    if (walk.outcome == AddressWalk::NotResolved) ThrowNotCreated("::getaddrinfo", walk.error);
    if (walk.outcome != AddressWalk::Accepted) ThrowNotCreated("::socket", walk.ErrorOrLast());

    return NewSocket(made, systemType, systemProtocol, family);
}

VelBase::ReturnPtrI<SocketXt> CreateSocketXt(Socket::SOCKET_TYPE type,
                                             Socket::SOCKET_PROTOCOL protocol,
                                             SocketXt::ADDR_FAMILY family) {
    if (family == SocketXt::FAMILY_UNKNOWN) return CreateSocketXt(type, protocol);

    const WinsockScope scope(Function);
    const int systemType = SystemTypeFrom(type);
    const int systemProtocol = SystemProtocolFrom(protocol);
    const Winsock::Handle made =
        Winsock::socket(SystemFamilyFrom(family), systemType, systemProtocol);
    if (made == Winsock::InvalidSocket) ThrowNotCreated("::socket", Winsock::WSAGetLastError());

    return NewSocket(made, systemType, systemProtocol, family);
}

}  // namespace VelNet

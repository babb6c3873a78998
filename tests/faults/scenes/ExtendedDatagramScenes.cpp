#include <VelNet/SocketInitialization.h>
#include <support/RawPeer.h>

#include "faults/scenes/Scene.h"

namespace Faults {

namespace {

using VelBase::ReturnString;
using VelNet::SocketXt;

constexpr unsigned int Patience = 1'000;
constexpr int Join = 0;
constexpr int Leave = 1;

XtPtr DatagramXt(SocketXt::ADDR_FAMILY family) {
    XtPtr socket = VelNet::CreateSocketXt(VelNet::Socket::SOCKET_DATAGRAM,
                                          VelNet::Socket::PROTOCOL_UDP, family);
    socket->SetReceiveTimeout(Patience);
    return socket;
}

std::string PortOf(const SocketXt& socket) {
    return std::to_string(Support::LocalPortOf(socket.GetHandle()));
}

std::string ReceiveFrom(SocketXt& socket) {
    char room[16] = {};
    ReturnString host;
    ReturnString port;
    const int come = socket.RecvFrom(room, sizeof room, host, port);
    Require(come == 8 && std::string(room, 8) == "datagram", "another datagram was received");
    return Line(host.c_str());
}

std::string Exchange(SocketXt::ADDR_FAMILY family, const char* loopback) {
    const VelNet::SocketInitialization layer;
    const XtPtr one = DatagramXt(family);
    one->Bind(loopback, "0");
    const XtPtr other = DatagramXt(family);
    other->Bind(VelNet::SPECIAL_ANY, "0");
    std::string text = Line(one->SendTo("datagram", 8, loopback, PortOf(*other).c_str()));
    text += ReceiveFrom(*other);
    text += Line(other->SendTo("datagram", 8, VelNet::SPECIAL_LOOPBACK, PortOf(*one).c_str()));
    text += ReceiveFrom(*one) + Line(one->GetStatus());
    (void)one->SendTo("datagram", 8, loopback, PortOf(*other).c_str());
    char room[4];
    ReturnString host;
    ReturnString port;
    text += OutcomeOf(VelNet::SOCKET_ERR_MSGSIZE,
                      [&] { (void)other->RecvFrom(room, sizeof room, host, port); });
    const ClosedAfterAWhile bounded(*other);
    other->SetReceiveTimeout(1);
    text += OutcomeOf(VelNet::SOCKET_ERR_TIMEDOUT,
                      [&] { (void)other->RecvFrom(room, sizeof room, host, port); });
    return text;
}

std::string Ipv4() {
    return Exchange(SocketXt::FAMILY_IPV4, "127.0.0.1");
}

std::string Ipv6() {
    return Exchange(SocketXt::FAMILY_IPV6, "::1");
}

std::string Broadcast() {
    const VelNet::SocketInitialization layer;
    const XtPtr socket = DatagramXt(SocketXt::FAMILY_IPV4);
    std::string text = OutcomeOf(VelNet::SOCKET_ERR_ACCES, [&] {
        (void)socket->SendTo("datagram", 8, "127.255.255.255", "9");
    });
    socket->SetSocketForBroadcast();
    text += Line(socket->SendTo("datagram", 8, "127.255.255.255", "9"));
    // No interface of this network leads to others.
    return text + OutcomeOf(VelNet::SOCKET_ERR_NETUNREACH, [&] {
               (void)socket->SendTo("datagram", 8, VelNet::SPECIAL_BROADCAST, "9");
           });
}

std::string Groups(SocketXt::ADDR_FAMILY family, const char* local, const char* group) {
    const VelNet::SocketInitialization layer;
    const XtPtr socket = DatagramXt(family);
    socket->Bind(local, "0");
    socket->SetSocketForMulticast(group, Join);
    std::string text;
    // A network without neighbours carries no group of IPv6.
    if (family == SocketXt::FAMILY_IPV4) {
        text += Line(socket->SendTo("datagram", 8, group, PortOf(*socket).c_str()));
        text += ReceiveFrom(*socket);
    }
    socket->SetSocketForMulticast(group, Leave);
    return text + OutcomeOf(VelNet::SOCKET_ERR_INVAL,
                            [&] { socket->SetSocketForMulticast(group, Leave); });
}

constexpr unsigned int GroupCalls = 3;

std::string GroupOnAny() {
    return Groups(SocketXt::FAMILY_IPV4, "0.0.0.0", "239.1.2.3");
}

std::string GroupOnAddress() {
    return Groups(SocketXt::FAMILY_IPV4, "127.0.0.1", "239.1.2.3");
}

std::string Ipv6Group() {
    return Groups(SocketXt::FAMILY_IPV6, "::", "ff15::1234");
}

std::string Ipv6GroupOnAddress() {
    return Groups(SocketXt::FAMILY_IPV6, "::1", "ff15::1234");
}

std::string SpecialGroup() {
    const VelNet::SocketInitialization layer;
    const XtPtr socket = DatagramXt(SocketXt::FAMILY_IPV6);
    socket->Bind("::", "0");
    socket->SetSocketForMulticast(VelNet::SPECIAL_BROADCAST, Join);
    return OutcomeOf(VelNet::SOCKET_ERR_NOPROTOOPT,
                     [&] { socket->SetSocketForMulticast(VelNet::SPECIAL_BROADCAST, 2); });
}

// A socket with a peer, whose groups move to sockets of their own.
std::string ConnectedMember() {
    const VelNet::SocketInitialization layer;
    const XtPtr socket = DatagramXt(SocketXt::FAMILY_IPV4);
    socket->Bind("0.0.0.0", "0");
    socket->SetSocketForMulticast("239.1.2.3", Join);
    const XtPtr peer = DatagramXt(SocketXt::FAMILY_IPV4);
    peer->Bind("127.0.0.1", "0");
    socket->Connect("127.0.0.1", PortOf(*peer).c_str());
    (void)peer->SendTo("datagram", 8, "239.1.2.3", PortOf(*socket).c_str());
    return ReceiveFrom(*socket);
}

}  // namespace

std::vector<Scene> ExtendedDatagramScenes() {
    return {{"datagrams IPv4", Ipv4},
            {"datagrams IPv6", Ipv6},
            {"broadcast", Broadcast},
            {"group", GroupOnAny, GroupCalls},
            {"group on an address", GroupOnAddress, GroupCalls},
            {"group of IPv6", Ipv6Group, GroupCalls},
            {"group of IPv6 on an address", Ipv6GroupOnAddress, GroupCalls},
            {"special group", SpecialGroup, 2},
            {"group with a peer", ConnectedMember, 1}};
}

}  // namespace Faults

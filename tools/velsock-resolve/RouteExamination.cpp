// What the doctor asks about ways into the network. A datagram socket that is connected tells from
// which address its datagrams would leave, and none does.
#include <VelBase/ReturnPtrI.h>
#include <VelNet/SocketXt.h>

#include "Examining.h"
#include "SystemNetwork.h"

namespace VelSockResolve {

namespace {

using VelBase::ReturnPtrI;
using VelNet::Socket;
using VelNet::SocketXt;

struct Version {
    SocketXt::ADDR_FAMILY family;
    const char* name;
    const char* group;
    const char* remedy;  // for groups without a route
};

constexpr const char* AnyPort = "9";

constexpr Version Ipv4{SocketXt::FAMILY_IPV4, "IPv4", "239.255.77.77",
                       "bring an interface up that has an IPv4 address and a route for "
                       "224.0.0.0/4, or a default route"};
constexpr Version Ipv6{SocketXt::FAMILY_IPV6, "IPv6", "ff15::7777",
                       "bring an interface up that has an IPv6 address and a route for ff00::/8"};

ReturnPtrI<SocketXt> CreateDatagramSocket(const Version& version) {
    return VelNet::CreateSocketXt(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP, version.family);
}

std::string LeavesFrom(const SocketXt& socket) {
    return "datagrams leave from " + VelSockTools::LocalHostOf(socket);
}

Finding SocketFinding(const Version& version) {
    return Try(
        std::string(version.name) + " sockets",
        [&] {
            const auto socket = CreateDatagramSocket(version);
            socket->Bind(VelNet::SPECIAL_LOOPBACK, "0");
            return std::string("can be created and bound to ") + VelSockTools::LocalHostOf(*socket);
        },
        std::string("let the system have ") + version.name + ", with its loopback address");
}

// IPv6 has groups alone.
Finding BroadcastFinding() {
    return Try(
        "IPv4 broadcast",
        [] {
            const auto socket = CreateDatagramSocket(Ipv4);
            socket->SetSocketForBroadcast();
            socket->Connect(VelNet::SPECIAL_BROADCAST, AnyPort);
            return LeavesFrom(*socket);
        },
        Ipv4.remedy);
}

Finding MulticastFinding(const Version& version) {
    return Try(
        std::string(version.name) + " multicast",
        [&] {
            const auto receiver = CreateDatagramSocket(version);
            receiver->Bind(VelNet::SPECIAL_ANY, "0");
            receiver->SetSocketForMulticast(version.group, 0);
            const auto sender = CreateDatagramSocket(version);
            sender->Connect(version.group, AnyPort);
            return "groups can be joined, and " + LeavesFrom(*sender);
        },
        version.remedy);
}

}  // namespace

Findings ExamineRoutes() {
    Findings findings;
    for (const Version& version : {Ipv4, Ipv6}) {
        findings.push_back(SocketFinding(version));
        if (!findings.back().works) continue;
        if (version.family == SocketXt::FAMILY_IPV4) findings.push_back(BroadcastFinding());
        findings.push_back(MulticastFinding(version));
    }
    return findings;
}

}  // namespace VelSockResolve

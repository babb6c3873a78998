// An extended socket over the loopback interface: what its model remembers, and what the system
// tells of it.
#pragma once

#include <VelNet/SocketXt.h>
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "fuzz/LoopbackModel.h"

namespace Fuzz {

struct Datagram {
    std::string bytes;
    TextEnd sender;
};

struct XtSlot {
    VelBase::ReturnPtrI<VelNet::SocketXt> socket;
    State state = State::Closed;
    bool isDatagram = false;
    bool isIpv6 = false;
    bool isNonBlocking = false;
    std::string port;       // the system's; empty while it is not bound
    TextEnd local, remote;  // as the socket keeps them
    std::shared_ptr<End> end;
    std::deque<std::shared_ptr<End>> clients;
    std::deque<std::string> clientPorts;
    std::deque<Datagram> datagrams;
    std::string peerPort;  // of a datagram socket that has a peer

    const char* Host() const { return isIpv6 ? "::1" : "127.0.0.1"; }
    const char* ForeignHost() const { return isIpv6 ? "127.0.0.1" : "::1"; }
    // An IPv4 address is too short for an IPv6 socket.
    int ForeignError() const { return isIpv6 ? 10014 : 10047; }

    int UnlessClosed(int error) const { return state == State::Closed ? 10038 : error; }

    bool Takes(const XtSlot& sender) const {
        return isDatagram && isIpv6 == sender.isIpv6 && !port.empty() &&
               (peerPort.empty() || peerPort == sender.port);
    }
};

// The one that the system has bound the socket to.
inline std::string PortOf(const VelNet::SocketXt& socket) {
    sockaddr_in6 address = {};
    socklen_t size = sizeof address;
    const auto handle = static_cast<int>(socket.GetHandle());
    const int result = ::getsockname(handle, reinterpret_cast<sockaddr*>(&address), &size);
    Expect("getsockname", 0, result);
    // The port stands at the same place in both families' addresses.
    return std::to_string(ntohs(address.sin6_port));
}

inline std::string ThisComputer(const XtSlot& slot) {
    return slot.socket
        ->GetSpecialAddress(VelNet::SPECIAL_THIS_MACHINE, VelNet::SocketXt::FAMILY_IPV4)
        .c_str();
}

}  // namespace Fuzz

// What a model of extended sockets over the loopback interface remembers.
#pragma once

#include <VelNet/SocketXt.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "fuzz/LoopbackModel.h"

namespace Fuzz {

inline constexpr char Host[] = "127.0.0.1";

struct TextEnd {
    std::string host;
    std::string port;
};

struct Datagram {
    std::string bytes;
    std::string senderPort;
};

struct XtSlot {
    VelBase::ReturnPtrI<VelNet::SocketXt> socket;
    State state = State::Closed;
    bool isDatagram = false;
    std::string port;       // the system's; empty while it is not bound
    TextEnd local, remote;  // as the socket keeps them
    std::shared_ptr<End> end;
    std::deque<std::shared_ptr<End>> clients;
    std::deque<std::string> clientPorts;
    std::deque<Datagram> datagrams;
};

inline std::string PortOf(const VelNet::SocketXt& socket) {
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    const auto handle = static_cast<int>(socket.GetHandle());
    const int result = ::getsockname(handle, reinterpret_cast<sockaddr*>(&address), &size);
    Expect("getsockname", 0, result);
    return std::to_string(ntohs(address.sin_port));
}

inline LogLine Line(const char* category, const std::string& event, const TextEnd& local,
                    const TextEnd& remote, const std::string& more = {}) {
    return {category,
            Support::Widen(event + ", Local address: " + local.host + " (" + local.port +
                           "), Remote address: " + remote.host + " (" + remote.port + ")" + more)};
}

}  // namespace Fuzz

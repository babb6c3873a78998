// Two connected sockets, for a thread that wakes another one.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelNet/Octets.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketAddress.h>

namespace VelCompanion {

// Two ends of a stream within this process: what one sends the other receives. Each end belongs to
// one thread at a time.
struct SocketPair {
    VelBase::ReturnPtrI<VelNet::Socket> first;   // one end
    VelBase::ReturnPtrI<VelNet::Socket> second;  // the other
};

// Connects two blocking IPv4 sockets on the loopback address, on a port that the system chooses.
// Both are this process's: a connection that another program makes to that port is dropped.
//
// Throws: what CreateSocket and a socket's Bind, Listen, Connect and Accept throw
[[nodiscard]] inline SocketPair MakeSocketPair() {
    using VelNet::Socket;
    const VelNet::Octets loopback(127, 0, 0, 1);
    const auto listener = VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
    listener->Bind(loopback, 0);
    listener->Listen();
    SocketPair pair{VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP), {}};
    pair.first->Connect(loopback, listener->GetLocalAddress().GetPort());
    VelNet::SocketAddress peer;
    do {
        pair.second = listener->Accept(peer);
    } while (peer.GetPort() != pair.first->GetLocalAddress().GetPort());
    return pair;
}

}  // namespace VelCompanion

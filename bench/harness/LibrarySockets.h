// This library's sockets on loopback. All failures throw VelNet::Exception.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketXt.h>

#include <string>

namespace Bench {

using SocketOwner = VelBase::ReturnPtrI<VelNet::Socket>;
using ExtendedOwner = VelBase::ReturnPtrI<VelNet::SocketXt>;

VelNet::Octets Loopback();

SocketOwner CreateStream();
SocketOwner CreateListener();

ExtendedOwner CreateExtendedStream();
ExtendedOwner CreateExtendedListener();
ExtendedOwner CreateBoundExtendedDatagram();
// Where it is bound, as a text.
std::string PortTextOf(const VelNet::SocketXt& socket);
// The loopback address of its IP version, as a text.
const char* LoopbackTextOf(const VelNet::SocketXt& socket);

// Two ends of a TCP connection.
class ClassicPair {
public:
    ClassicPair();

    VelNet::Socket& Client() const noexcept { return *client_; }
    VelNet::Socket& Server() const noexcept { return *server_; }

private:
    SocketOwner client_;
    SocketOwner server_;
};

class ExtendedPair {
public:
    ExtendedPair();

    VelNet::SocketXt& Client() const noexcept { return *client_; }
    VelNet::SocketXt& Server() const noexcept { return *server_; }

private:
    ExtendedOwner client_;
    ExtendedOwner server_;
};

}  // namespace Bench

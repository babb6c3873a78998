// The sockets at the ends of a connection.
#pragma once

#include <VelNet/SocketXt.h>

#include <array>
#include <cstdint>
#include <string>

#include "Connection.h"

namespace Soak {

template <class Socket>
using Ends = std::array<VelBase::ReturnPtrI<Socket>, 2>;

std::string Payload(Random& random, std::size_t size);
std::uint64_t Checksum(const std::string& bytes);

// A blocking socket fails in time if what it waits for never comes.
void LimitWaiting(VelNet::Socket& socket);
// Waits in a set of that socket alone.
void WaitUntilReadable(VelNet::Socket& socket);

Ends<VelNet::Socket> ConnectClassicStreams();
Ends<VelNet::Socket> ConnectClassicDatagrams();
Ends<VelNet::Socket> ConnectExtendedStreams(VelNet::SocketXt::ADDR_FAMILY family);
Ends<VelNet::SocketXt> BindExtendedDatagrams(VelNet::SocketXt::ADDR_FAMILY family);

const char* LoopbackOf(VelNet::SocketXt::ADDR_FAMILY family);
std::string PortOf(const VelNet::SocketXt& socket);

}  // namespace Soak

// What the tools ask the system itself about names and sockets, since the library does not tell.
// Each system has its own source.
#pragma once

#include <VelNet/SocketXt.h>

#include <optional>
#include <string>
#include <vector>

namespace VelSockTools {

struct HostAddress {
    VelNet::SocketXt::ADDR_FAMILY family;
    std::string text;  // numeric
};

// Returns the host's addresses of both IP versions in the resolver's order; none if it does not
// resolve. The socket layer must be up.
std::vector<HostAddress> FindAddresses(const std::string& host);

// Returns the port of a service for streams or for datagrams, if the system knows one. The socket
// layer need not be up.
std::optional<unsigned short> FindServicePort(const std::string& name, bool datagrams);

// Returns the port that a socket is bound to; 0 if the system does not tell.
unsigned short LocalPortOf(const VelNet::SocketXt& socket);

// Ends the sending direction of a connection: the peer receives what has been sent and then the
// end. Returns whether the system did it.
bool EndSending(const VelNet::SocketXt& socket);

}  // namespace VelSockTools

// What the tools ask the system itself about names and sockets, since the library does not tell.
// Each system has its own source.
#pragma once

#include <VelNet/SocketError.h>
#include <VelNet/SocketXt.h>

#include <optional>
#include <string>
#include <vector>

namespace VelSockTools {

struct HostAddress {
    VelNet::SocketXt::ADDR_FAMILY family;
    std::string text;  // numeric
};

struct LookUp {
    std::vector<HostAddress> addresses;
    VelNet::SOCKET_ERR failure;  // why there are none
};

// Looks the host's addresses of both IP versions up, in the resolver's order. Blocks for as long as
// the system's resolver does. The socket layer must be up.
LookUp FindAddresses(const std::string& host);

// Returns the name of a numeric address of either IP version, if the system's resolver knows one.
// The socket layer must be up.
std::optional<std::string> FindName(const std::string& address);

// Returns the port of a service for streams or for datagrams, if the system knows one. The socket
// layer need not be up.
std::optional<unsigned short> FindServicePort(const std::string& name, bool datagrams);

// Returns the port that a socket is bound to; 0 if the system does not tell.
unsigned short LocalPortOf(const VelNet::SocketXt& socket);

// Returns the address that a socket is bound to, numeric; an empty text if the system does not
// tell. Of a datagram socket that is connected, it is the one that the route to the peer chooses.
std::string LocalHostOf(const VelNet::SocketXt& socket);

// Ends the sending direction of a connection: the peer receives what has been sent and then the
// end. Returns whether the system did it.
bool EndSending(const VelNet::SocketXt& socket);

// Makes the connection end abruptly when it is closed, so that the peer does not take what it has
// received for all there is.
void EndAbruptly(const VelNet::SocketXt& socket);

// Takes that back.
void EndInOrder(const VelNet::SocketXt& socket);

}  // namespace VelSockTools

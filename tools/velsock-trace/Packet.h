// IP packets as hosts would send them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "Endpoint.h"

namespace VelSockTrace {

// The ends of a packet, of one IP version and with ports.
struct Route {
    Endpoint from;
    Endpoint to;
};

enum TcpFlag : unsigned char { Fin = 1, Syn = 2, Rst = 4, Psh = 8, Ack = 16 };

struct TcpHead {
    std::uint32_t sequence = 0;
    std::uint32_t acknowledged = 0;
    unsigned char flags = 0;
};

// Return the packet from its IP header on, with all checksums. Of data that does not fit, nothing
// must be given.
std::string TcpPacket(const Route& route, const TcpHead& head, std::string_view data);
std::string UdpPacket(const Route& route, std::string_view data);

// How many bytes of data fit into either kind of packet.
inline constexpr std::size_t MostOfSegment = 61440;
inline constexpr std::size_t MostOfDatagram = 65507;

}  // namespace VelSockTrace

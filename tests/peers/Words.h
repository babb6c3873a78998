// What the programs of this folder take from their command lines, and how they end.
#pragma once

#include <VelNet/SocketXt.h>

#include <chrono>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Peers {

// For a peer that is slow, not for one that is gone.
inline constexpr std::chrono::seconds Patience{60};

inline VelNet::SocketXt::ADDR_FAMILY FamilyFrom(std::string_view word) {
    if (word == "ipv4") return VelNet::SocketXt::FAMILY_IPV4;
    if (word == "ipv6") return VelNet::SocketXt::FAMILY_IPV6;
    throw std::invalid_argument("neither ipv4 nor ipv6");
}

inline VelBase::ReturnPtrI<VelNet::SocketXt> Stream(VelNet::SocketXt::ADDR_FAMILY family) {
    return VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP,
                                  family);
}

// A relay serves until its standard input has a line, or ends.
inline void AwaitLineOfInput() {
    std::string line;
    std::getline(std::cin, line);
}

}  // namespace Peers

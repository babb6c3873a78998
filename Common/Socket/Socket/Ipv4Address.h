// Converts between the library's IPv4 endpoints and the system's.
#pragma once

#include "Platform/Winsock.h"
#include "VelNet/SocketAddress.h"

namespace VelNet {

inline Winsock::AddressIpv4 SystemAddressFrom(const Octets& octets, unsigned short port) noexcept {
    return {
        Winsock::FamilyIpv4,
        {static_cast<unsigned char>(port >> 8), static_cast<unsigned char>(port & 0xFF)},
        {octets.GetOctet1(), octets.GetOctet2(), octets.GetOctet3(), octets.GetOctet4()},
        {},
    };
}

inline SocketAddress SocketAddressFrom(const Winsock::AddressIpv4& address) {
    const unsigned char* const octets = address.address;
    const unsigned int port = static_cast<unsigned int>(address.port[0]) << 8 | address.port[1];
    return {Octets(octets[0], octets[1], octets[2], octets[3]), port};
}

}  // namespace VelNet

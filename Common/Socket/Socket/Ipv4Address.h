// Converts the library's IPv4 endpoints to the system's.
#pragma once

#include "Platform/Winsock.h"
#include "VelNet/Octets.h"

namespace VelNet {

inline Winsock::AddressIpv4 SystemAddressFrom(const Octets& octets, unsigned short port) noexcept {
    return {
        Winsock::FamilyIpv4,
        {static_cast<unsigned char>(port >> 8), static_cast<unsigned char>(port & 0xFF)},
        {octets.GetOctet1(), octets.GetOctet2(), octets.GetOctet3(), octets.GetOctet4()},
        {},
    };
}

}  // namespace VelNet

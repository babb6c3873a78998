// IPv4 and IPv6, each with its numbers and the lengths of its addresses.
#pragma once

#include "Platform/Winsock.h"

#include <netinet/in.h>
#include <sys/socket.h>

namespace Posix {

struct AddressFamily {
    sa_family_t kernel;
    unsigned short winsock;
    socklen_t addressLength;  // of a socket address, the same in the kernel and Winsock
    socklen_t hostLength;     // of the host's address alone
};

inline constexpr AddressFamily Ipv4Family = {AF_INET, Winsock::FamilyIpv4, sizeof(sockaddr_in),
                                             sizeof(in_addr)};
inline constexpr AddressFamily Ipv6Family = {AF_INET6, Winsock::FamilyIpv6, sizeof(sockaddr_in6),
                                             sizeof(in6_addr)};

constexpr const AddressFamily& IpFamily(bool ipv6) noexcept {
    return ipv6 ? Ipv6Family : Ipv4Family;
}

// Returns null for the number of another family, or of none.
constexpr const AddressFamily* FamilyFromWinsock(int number) noexcept {
    if (number == Ipv4Family.winsock) return &Ipv4Family;
    return number == Ipv6Family.winsock ? &Ipv6Family : nullptr;
}

}  // namespace Posix

// Addresses in tests: their bytes, as the system has them.
#pragma once

#include <string>

namespace Scripted {

// The four bytes of a dotted address as they stand in memory. The text must be a.b.c.d.
std::string AddressBytes(const std::string& dotted);

// The 16 bytes of an IPv4 socket address.
std::string SocketAddressBytes(const std::string& dotted, unsigned short port);

// The 16 bytes of an IPv6 address: hexadecimal groups, "::" for missing ones.
std::string Ipv6AddressBytes(const std::string& text);

// The 28 bytes of an IPv6 socket address.
std::string SocketAddressBytesIpv6(const std::string& text, unsigned short port,
                                   unsigned int scope = 0, unsigned int flowInformation = 0);

}  // namespace Scripted

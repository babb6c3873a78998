// Wide texts in tests.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Scripted {

// A wide text as u"…" compares and prints it: EXPECT_EQ(Text(exception.GetMessage()), u"…"). A null
// text gives u"(null)".
std::u16string Text(const unsigned short* text);

// The units with a terminator: Wide(u"text").data() can be passed wherever a wide text is asked
// for.
std::vector<unsigned short> Wide(std::u16string_view text);
// The same from ASCII.
std::vector<unsigned short> Wide(const char* text);

// The four bytes of a dotted address as they stand in memory. The text must be a.b.c.d.
std::string AddressBytes(const std::string& dotted);

// The 16 bytes of an IPv4 socket address.
std::string SocketAddressBytes(const std::string& dotted, unsigned short port);

// The 16 bytes of an IPv6 address: hexadecimal groups, "::" for missing ones.
std::string Ipv6AddressBytes(const std::string& text);

// The 28 bytes of an IPv6 socket address.
std::string SocketAddressBytesIpv6(const std::string& text, unsigned short port,
                                   unsigned int scope = 0, unsigned int flowInformation = 0);

// Every number that the table of socket errors knows, and numbers around and far from them: 0,
// negative ones, ones without the offset 10000, ones that only look alike in their low 16 bits.
std::vector<int> ErrorNumbers();

}  // namespace Scripted

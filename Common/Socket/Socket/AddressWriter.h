// Writes what the system tells into addresses that exist, and their texts.
#pragma once

#include "Platform/Winsock.h"
#include "VelNet/SocketAddress.h"

namespace VelNet {

struct DottedText {
    char text[sizeof "255.255.255.255"];
};

// An address owns its parts on the heap. Writing into one instead of assigning a new one takes no
// memory, and so cannot fail.
class AddressWriter {
public:
    static void Write(const Winsock::AddressIpv4& source, SocketAddress& target) noexcept;

    // Makes it equal to a new one: 0.0.0.0 and port 0.
    static void Clear(SocketAddress& target) noexcept { Write({}, target); }

    // The text that the address's octets have, in no memory of its own.
    static DottedText Dotted(const SocketAddress& source) noexcept;
};

}  // namespace VelNet

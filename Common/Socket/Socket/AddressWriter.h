// Writes what the system tells into addresses that exist.
#pragma once

#include "Platform/Winsock.h"
#include "VelNet/SocketAddress.h"

namespace VelNet {

// An address owns its parts on the heap. Writing into one instead of assigning a new one takes no
// memory, and so cannot fail.
class AddressWriter {
public:
    static void Write(const Winsock::AddressIpv4& source, SocketAddress& target) noexcept;

    // Makes it equal to a new one: 0.0.0.0 and port 0.
    static void Clear(SocketAddress& target) noexcept { Write({}, target); }
};

}  // namespace VelNet

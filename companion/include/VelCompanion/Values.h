// Order, comparison, hash and output of addresses, so that they can be keys of the standard
// library's containers and be written to streams.
//
// The operators stand in the namespace of what they take, where the language looks for them.
#pragma once

#include <VelNet/Octets.h>
#include <VelNet/SocketAddress.h>

#include <cstddef>
#include <functional>
#include <ostream>

namespace VelNet {

// Unequal if any octet is.
inline bool operator!=(const Octets& left, const Octets& right) noexcept {
    return !(left == right);
}

// By octet 1, then octet 2 and so on.
inline bool operator<(const Octets& left, const Octets& right) noexcept {
    return left.GetAddress() < right.GetAddress();
}

// The dotted form. Throws std::bad_alloc, and what the stream throws.
inline std::ostream& operator<<(std::ostream& stream, const Octets& octets) {
    return stream << octets.GetAddressString().c_str();
}

// Equal if addresses and ports are equal. Throws std::bad_alloc.
inline bool operator==(const SocketAddress& left, const SocketAddress& right) {
    return left.GetPort() == right.GetPort() && left.GetOctets() == right.GetOctets();
}
inline bool operator!=(const SocketAddress& left, const SocketAddress& right) {
    return !(left == right);
}

// By address, then port. Throws std::bad_alloc.
inline bool operator<(const SocketAddress& left, const SocketAddress& right) {
    const Octets leftOctets = left.GetOctets();
    const Octets rightOctets = right.GetOctets();
    if (leftOctets == rightOctets) return left.GetPort() < right.GetPort();
    return leftOctets < rightOctets;
}

// "127.0.0.1:4000". Throws std::bad_alloc, and what the stream throws.
inline std::ostream& operator<<(std::ostream& stream, const SocketAddress& address) {
    return stream << address.GetOctets() << ':' << address.GetPort();
}

}  // namespace VelNet

template <>
struct std::hash<VelNet::Octets> {
    std::size_t operator()(const VelNet::Octets& octets) const noexcept {
        return std::hash<unsigned int>()(octets.GetAddress());
    }
};

template <>
struct std::hash<VelNet::SocketAddress> {
    // Throws std::bad_alloc.
    std::size_t operator()(const VelNet::SocketAddress& address) const {
        const unsigned long long both =
            static_cast<unsigned long long>(address.GetOctets().GetAddress()) << 16U;
        return std::hash<unsigned long long>()(both | address.GetPort());
    }
};

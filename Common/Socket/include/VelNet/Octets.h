// An IPv4 address.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReturnString.h"

namespace VelNet {

// The four octets of an IPv4 address in dotted order: octet 1 is the leftmost number. A value that
// owns a separately allocated block of four bytes; every constructor throws std::bad_alloc when
// there is no memory for it. Copies are independent. Each object is used by one thread at a time.
class VELSOCK_EXPORT Octets {
public:
    // 0.0.0.0
    Octets();
    Octets(unsigned char octet1, unsigned char octet2, unsigned char octet3, unsigned char octet4);

    // From an address word as a little-endian Winsock host holds it in memory: octet 1 is the
    // lowest byte. Required: this is the opposite of GetAddress, so Octets(x).GetAddress() is x
    // with its bytes reversed.
    Octets(unsigned int address);

    Octets(const Octets& other);
    // Copies the bytes into this object's own block; allocates nothing.
    Octets& operator=(const Octets& other) noexcept;
    ~Octets();

    // True when all four octets are equal. There is no operator!= (C++20 derives one).
    bool operator==(const Octets& other) const noexcept;

    unsigned char GetOctet1() const noexcept;
    unsigned char GetOctet2() const noexcept;
    unsigned char GetOctet3() const noexcept;
    unsigned char GetOctet4() const noexcept;

    // The address as a number in host order: octet 1 is the highest byte.
    unsigned int GetAddress() const noexcept;

    // The dotted form without leading zeros, 15 characters at most. Throws std::bad_alloc.
    VelBase::ReturnString GetAddressString() const;

private:
    unsigned char* bytes_;
};

}  // namespace VelNet

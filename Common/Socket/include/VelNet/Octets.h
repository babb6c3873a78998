// An IPv4 address.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReturnString.h"

#include <type_traits>

namespace VelNet {

// The four octets of an IPv4 address in dotted order: octet 1 is the leftmost number.
//
// A value that owns a heap block of four bytes; copies are independent. Every constructor can throw
// std::bad_alloc. Each object belongs to one thread at a time.
class VELSOCK_EXPORT Octets {
public:
    // 0.0.0.0
    Octets();
    Octets(unsigned char octet1, unsigned char octet2, unsigned char octet3, unsigned char octet4);

    // From an address as Winsock's in_addr holds it on a little-endian host: octet 1 is the lowest
    // byte.
    //
    // Required: this is the opposite byte order of GetAddress; Octets(x).GetAddress() is x with its
    // bytes reversed.
    Octets(unsigned int address);

    // No enumerator is an address: without this, Address::LOOPBACK and SPECIAL_LOOPBACK would be
    // taken for the numbers 0 and 2 wherever an address is asked for, and so for 0.0.0.0 and
    // 2.0.0.0. Cast to unsigned int where a number is meant.
    template <class Enumerator, std::enable_if_t<std::is_enum<Enumerator>::value, int> = 0>
    Octets(Enumerator) = delete;

    // Copies the octets into a block of its own.
    Octets(const Octets& other);
    // Copies the octets; does not allocate.
    Octets& operator=(const Octets& other) noexcept;
    ~Octets();

    // Equal if all four octets are equal. There is no operator!=; C++20 derives one.
    bool operator==(const Octets& other) const noexcept;

    // Return one number of the dotted form; the first is the leftmost.
    unsigned char GetOctet1() const noexcept;
    unsigned char GetOctet2() const noexcept;
    unsigned char GetOctet3() const noexcept;
    unsigned char GetOctet4() const noexcept;

    // Returns the address as a number in host byte order: octet 1 is the highest byte.
    unsigned int GetAddress() const noexcept;

    // Returns the dotted form without leading zeros, at most 15 characters.
    //
    // Throws: std::bad_alloc
    VelBase::ReturnString GetAddressString() const;

private:
    friend class AddressWriter;

    unsigned char* bytes_;
};

}  // namespace VelNet

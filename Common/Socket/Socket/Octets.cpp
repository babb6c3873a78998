#include "VelNet/Octets.h"

#include "Socket/ClearForGood.h"
#include "Text/Decimal.h"

#include <cstring>

namespace VelNet {

namespace {

constexpr std::size_t OctetCount = 4;

constexpr unsigned char ByteOf(unsigned int word, unsigned int position) noexcept {
    return static_cast<unsigned char>(word >> (8 * position) & 0xFFU);
}

}  // namespace

Octets::Octets() : Octets(0, 0, 0, 0) {}

Octets::Octets(unsigned char octet1, unsigned char octet2, unsigned char octet3,
               unsigned char octet4)
    : bytes_(new unsigned char[OctetCount]{octet1, octet2, octet3, octet4}) {}

Octets::Octets(unsigned int address)
    : Octets(ByteOf(address, 0), ByteOf(address, 1), ByteOf(address, 2), ByteOf(address, 3)) {}

Octets::Octets(const Octets& other)
    : Octets(other.GetOctet1(), other.GetOctet2(), other.GetOctet3(), other.GetOctet4()) {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): copying a block onto itself changes nothing.
Octets& Octets::operator=(const Octets& other) noexcept {
    std::memmove(bytes_, other.bytes_, OctetCount);
    return *this;
}

Octets::~Octets() {
    delete[] bytes_;
    ClearForGood(bytes_);
}

bool Octets::operator==(const Octets& other) const noexcept {
    return std::memcmp(bytes_, other.bytes_, OctetCount) == 0;
}

unsigned char Octets::GetOctet1() const noexcept {
    return bytes_[0];
}
unsigned char Octets::GetOctet2() const noexcept {
    return bytes_[1];
}
unsigned char Octets::GetOctet3() const noexcept {
    return bytes_[2];
}
unsigned char Octets::GetOctet4() const noexcept {
    return bytes_[3];
}

// Required (OctetsValue.AddressIsTheWordReversed): the opposite byte order of the constructor's.
unsigned int Octets::GetAddress() const noexcept {
    unsigned int address = 0;
    for (std::size_t index = 0; index < OctetCount; ++index)
        address = address << 8 | bytes_[index];
    return address;
}

VelBase::ReturnString Octets::GetAddressString() const {
    char text[Text::DottedSize];
    Text::PutDotted(text, {bytes_[0], bytes_[1], bytes_[2], bytes_[3]});
    return {text};
}

}  // namespace VelNet

#include "Packet.h"

namespace VelSockTrace {

namespace {

constexpr unsigned char Tcp = 6;
constexpr unsigned char Udp = 17;
constexpr unsigned char HopLimit = 64;

void Put(std::string& bytes, unsigned int number, int size) {
    while (size-- > 0)
        bytes += static_cast<char>(number >> (8 * size) & 0xFFU);
}

void PutAddress(std::string& bytes, const IpAddress& address) {
    bytes.append(address.bytes.begin(), address.bytes.begin() + (address.version == 4 ? 4 : 16));
}

std::uint64_t Sum(std::string_view bytes) noexcept {
    std::uint64_t sum = 0;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        const std::uint64_t byte = static_cast<unsigned char>(bytes[index]);
        sum += index % 2 == 0 ? byte << 8U : byte;
    }
    return sum;
}

unsigned int Checksum(std::uint64_t sum) noexcept {
    while (sum > 0xFFFF)
        sum = (sum & 0xFFFFU) + (sum >> 16U);
    return static_cast<unsigned int>(~sum & 0xFFFFU);
}

void SetChecksum(std::string& bytes, std::size_t place, unsigned int sum) {
    bytes[place] = static_cast<char>(sum >> 8U);
    bytes[place + 1] = static_cast<char>(sum & 0xFFU);
}

// The addresses, protocol and length count too.
unsigned int TransportChecksum(const Route& route, unsigned char protocol,
                               std::string_view segment) {
    std::string pseudo;
    PutAddress(pseudo, route.from.address);
    PutAddress(pseudo, route.to.address);
    return Checksum(Sum(pseudo) + protocol + segment.size() + Sum(segment));
}

std::string Ipv4Head(const Route& route, unsigned char protocol, std::size_t length) {
    std::string head;
    Put(head, 0x4500, 2);
    Put(head, static_cast<unsigned int>(20 + length), 2);
    Put(head, 0, 2);       // no packet is a fragment, so none needs a name
    Put(head, 0x4000, 2);  // nor may any become one
    Put(head, HopLimit, 1);
    Put(head, protocol, 1);
    Put(head, 0, 2);
    PutAddress(head, route.from.address);
    PutAddress(head, route.to.address);
    SetChecksum(head, 10, Checksum(Sum(head)));
    return head;
}

std::string Ipv6Head(const Route& route, unsigned char protocol, std::size_t length) {
    std::string head;
    Put(head, 0x60000000, 4);
    Put(head, static_cast<unsigned int>(length), 2);
    Put(head, protocol, 1);
    Put(head, HopLimit, 1);
    PutAddress(head, route.from.address);
    PutAddress(head, route.to.address);
    return head;
}

std::string IpPacket(const Route& route, unsigned char protocol, const std::string& segment) {
    const bool isIpv4 = route.from.address.version == 4;
    return (isIpv4 ? Ipv4Head : Ipv6Head)(route, protocol, segment.size()) + segment;
}

// The largest segment, and windows of up to a gigabyte.
constexpr std::string_view SynOptions("\x02\x04\xFF\xC4\x01\x03\x03\x0E", 8);

}  // namespace

std::string TcpPacket(const Route& route, const TcpHead& head, std::string_view data) {
    const bool hasOptions = (head.flags & Syn) != 0;
    std::string segment;
    Put(segment, route.from.port, 2);
    Put(segment, route.to.port, 2);
    Put(segment, head.sequence, 4);
    Put(segment, head.acknowledged, 4);
    Put(segment, hasOptions ? 0x70 : 0x50, 1);
    Put(segment, head.flags, 1);
    Put(segment, 0xFFFF, 2);
    Put(segment, 0, 4);
    if (hasOptions) segment += SynOptions;
    segment += data;
    SetChecksum(segment, 16, TransportChecksum(route, Tcp, segment));
    return IpPacket(route, Tcp, segment);
}

std::string UdpPacket(const Route& route, std::string_view data) {
    std::string segment;
    Put(segment, route.from.port, 2);
    Put(segment, route.to.port, 2);
    Put(segment, static_cast<unsigned int>(8 + data.size()), 2);
    Put(segment, 0, 2);
    segment += data;
    // 0 would mean that there is none.
    const unsigned int sum = TransportChecksum(route, Udp, segment);
    SetChecksum(segment, 6, sum == 0 ? 0xFFFF : sum);
    return IpPacket(route, Udp, segment);
}

}  // namespace VelSockTrace

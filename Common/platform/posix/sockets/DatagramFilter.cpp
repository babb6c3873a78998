#include "sockets/DatagramFilter.h"

#include <linux/filter.h>
#include <sys/socket.h>

#include <cstring>

namespace Posix {

namespace {

// Offsets for classic BPF. Offset 0 is the UDP header, which begins with the source port; the IP
// header is at SKF_NET_OFF.
constexpr std::uint32_t Interface = static_cast<std::uint32_t>(SKF_AD_OFF + SKF_AD_IFINDEX);
constexpr std::uint32_t SourcePort = 0;
constexpr std::uint32_t SourceOfIpv4 = static_cast<std::uint32_t>(SKF_NET_OFF + 12);
constexpr std::uint32_t SourceOfIpv6 = static_cast<std::uint32_t>(SKF_NET_OFF + 8);

class FilterProgram {
public:
    // Drops datagrams without this value, in host byte order, at that offset.
    void Require(std::uint16_t size, std::uint32_t place, std::uint32_t value) noexcept {
        Append({static_cast<std::uint16_t>(BPF_LD | BPF_ABS | size), 0, 0, place});
        Append({BPF_JMP | BPF_JEQ | BPF_K, 1, 0, value});
        Append({BPF_RET | BPF_K, 0, 0, Nothing});
    }
    void RequireSource(const KernelAddress& peer) noexcept;

    bool AttachTo(int descriptor) noexcept;

private:
    static constexpr std::uint32_t Nothing = 0;
    static constexpr std::uint32_t WholeDatagram = 0xFFFFFFFF;
    static constexpr int MostRequirements = 6;  // interface, port and the four words of an address

    void Append(const sock_filter& instruction) noexcept { instructions_[count_++] = instruction; }

    sock_filter instructions_[3 * MostRequirements + 1];
    unsigned short count_ = 0;
};

void FilterProgram::RequireSource(const KernelAddress& peer) noexcept {
    Require(BPF_H, SourcePort, PortOf(peer));
    if (peer.any.sa_family == AF_INET) {
        Require(BPF_W, SourceOfIpv4, ntohl(peer.ipv4.sin_addr.s_addr));
        return;
    }
    for (std::uint32_t offset = 0; offset < sizeof(in6_addr); offset += sizeof(std::uint32_t)) {
        std::uint32_t word = 0;
        std::memcpy(&word, peer.ipv6.sin6_addr.s6_addr + offset, sizeof word);
        Require(BPF_W, SourceOfIpv6 + offset, ntohl(word));
    }
}

bool FilterProgram::AttachTo(int descriptor) noexcept {
    Append({BPF_RET | BPF_K, 0, 0, WholeDatagram});
    const sock_fprog program = {count_, instructions_};
    return ::setsockopt(descriptor, SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program) == 0;
}

}  // namespace

bool FilterDatagrams(int descriptor, unsigned int interface, const KernelAddress* peer) noexcept {
    FilterProgram program;
    if (interface != 0) program.Require(BPF_W, Interface, interface);
    if (peer != nullptr) program.RequireSource(*peer);
    return program.AttachTo(descriptor);
}

}  // namespace Posix

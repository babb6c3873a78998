// Requests to join or leave a group, and the kernel's answers.
#pragma once

#include "sockets/KernelAddress.h"

#include <netinet/in.h>

#include <array>

namespace Posix {

struct GroupRequest {
    int level = 0;  // IPPROTO_IP or IPPROTO_IPV6
    // An ip_mreq or an ipv6_mreq, padded with zeros. Both begin with the group.
    std::array<char, sizeof(ipv6_mreq)> bytes = {};

    bool operator==(const GroupRequest&) const = default;
};

// Return a Winsock error or None.
WinsockError JoinGroup(int descriptor, const GroupRequest& request) noexcept;
WinsockError LeaveGroup(int descriptor, const GroupRequest& request) noexcept;

// Whether the descriptor's socket is a member.
bool IsMember(int descriptor, const GroupRequest& request) noexcept;

// Returns the group's address, without port and scope.
KernelAddress GroupOf(const GroupRequest& request) noexcept;

// Returns the interface on which the descriptor's socket has joined an IPv6 group, which the kernel
// may have chosen; 0 if there is none.
unsigned int InterfaceOfGroup(int descriptor, const KernelAddress& group) noexcept;

}  // namespace Posix

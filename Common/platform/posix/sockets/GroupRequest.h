// Requests to join a group or to leave it, and the kernel's answers to them.
#pragma once

#include "sockets/KernelAddress.h"

#include <netinet/in.h>

#include <array>

namespace Posix {

struct GroupRequest {
    int level = 0;  // the protocol's, IPPROTO_IP or IPPROTO_IPV6
    // An ip_mreq or an ipv6_mreq, of which the rest is zero. Either begins with the group.
    std::array<char, sizeof(ipv6_mreq)> bytes = {};

    bool operator==(const GroupRequest&) const = default;
};

// Each results in a Winsock error or 0.
int JoinGroup(int descriptor, const GroupRequest& request) noexcept;
int LeaveGroup(int descriptor, const GroupRequest& request) noexcept;

// Whether the descriptor has joined what the request asks for.
bool IsMember(int descriptor, const GroupRequest& request) noexcept;

// The group's address, with neither port nor scope.
KernelAddress GroupOf(const GroupRequest& request) noexcept;

// The interface on which the descriptor has joined an IPv6 group, which the kernel may have chosen;
// 0 when there is none.
unsigned int InterfaceOfGroup(int descriptor, const KernelAddress& group) noexcept;

}  // namespace Posix

// The extended socket's broadcast and multicast when a call of the system fails or answers oddly.
#include "FaultStorySockets.h"

namespace SocketTests {
namespace {

// clang-format off
constexpr FaultStory Stories[] = {

{"SetSocketForBroadcast", R"(
    setsockopt(1001, 0xFFFF, 0x20, 1, 4)
)"},
{"SetSocketForBroadcast", R"(
    setsockopt(1001, 0xFFFF, 0x20, 1, 4)        -> 1
)"},
{"SetSocketForBroadcast", R"(
    setsockopt(1001, 0xFFFF, 0x20, 1, 4)        fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::SetSocketForBroadcast , cannot set socket option for broadcast , ::setsockopt(SO_BROADCAST) ,  , errno = {n}
)"},

// The list of a group's addresses is never given back. Entries of other families are skipped.

{"join", R"(
    getaddrinfo("group", null, {0, 0, 2, 0})    -> 239.1.2.3:0 239.1.2.4:0
    setsockopt(1001, 0x0, 0xC, 0xEF01020300000000, 8)
    leaks address list
)"},
{"join", R"(
    getaddrinfo("group", null, {0, 0, 2, 0})    -> (7) [ff02::1]:0 239.1.2.4:0
    setsockopt(1001, 0x29, 0xC, 0xFF02000000000000000000000000000100000000, 20)   fails
    setsockopt(1001, 0x0, 0xC, 0xEF01020400000000, 8)
    leaks address list
)"},
{"join", R"(
    getaddrinfo("group", null, {0, 0, 2, 0})    -> 239.1.2.3:0 [ff02::1]:0 (7)
    setsockopt(1001, 0x0, 0xC, 0xEF01020300000000, 8)   fails 10022
    setsockopt(1001, 0x29, 0xC, 0xFF02000000000000000000000000000100000000, 20)   fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::SetSocketForMulticast , cannot set option for multicast , ::setsockopt(IP_ADD_MEMBERSHIP) ,  , errno = {n}
    leaks address list
)"},
{"join", R"(
    getaddrinfo("group", null, {0, 0, 2, 0})    -> (7) (0)
    leaks address list
)"},
{"join", R"(
    getaddrinfo("group", null, {0, 0, 2, 0})    -> nothing
)"},
{"join", R"(
    getaddrinfo("group", null, {0, 0, 2, 0})    fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::SetSocketForMulticast , cannot set option for multicast , ::getaddrinfo ,  , errno = {n}
)"},
{"leave the group of all nodes", R"(
    getaddrinfo("ff02::1", null, {0, 0, 2, 0})  -> [ff02::1]:0
    setsockopt(1001, 0x29, 0xD, 0xFF02000000000000000000000000000100000000, 20)
    leaks address list
)"},
{"leave the group of all nodes", R"(
    getaddrinfo("ff02::1", null, {0, 0, 2, 0})  -> [ff02::1]:0
    setsockopt(1001, 0x29, 0xD, 0xFF02000000000000000000000000000100000000, 20)   fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::SetSocketForMulticast , cannot set option for multicast , ::setsockopt(IP_DROP_MEMBERSHIP) ,  , errno = {n}
    leaks address list
)"},
{"leave the group of all nodes", R"(
    getaddrinfo("ff02::1", null, {0, 0, 2, 0})  fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::SetSocketForMulticast , cannot set option for multicast , ::getaddrinfo ,  , errno = {n}
)"},
{"use a mode without a name", R"(
    getaddrinfo("group", null, {0, 0, 2, 0})    -> 239.1.2.3:0
    setsockopt(1001, 0x0, 0x0, 0xEF01020300000000, 8)
    leaks address list
)"},
{"use a mode without a name", R"(
    getaddrinfo("group", null, {0, 0, 2, 0})    -> 239.1.2.3:0
    setsockopt(1001, 0x0, 0x0, 0xEF01020300000000, 8)   fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::SetSocketForMulticast , cannot set option for multicast , ::setsockopt(IP_DROP_MEMBERSHIP) ,  , errno = {n}
    leaks address list
)"},
{"use a mode without a name", R"(
    getaddrinfo("group", null, {0, 0, 2, 0})    fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::SetSocketForMulticast , cannot set option for multicast , ::getaddrinfo ,  , errno = {n}
)"},
};
// clang-format on

const FaultTable Table = {
    {
        {"SetSocketForBroadcast", OnXt([](auto& socket) { socket.SetSocketForBroadcast(); })},
        {"join", OnXt([](auto& socket) { socket.SetSocketForMulticast("group", 0); })},
        {"leave the group of all nodes",
         OnXt([](auto& socket) { socket.SetSocketForMulticast(SPECIAL_BROADCAST, 1); },
              STATE_CREATED, Winsock::TypeDatagram, SocketXt::FAMILY_IPV6)},
        {"use a mode without a name",
         OnXt([](auto& socket) { socket.SetSocketForMulticast("group", 7); })},
    },
    Stories,
    true};

class FaultsOfXtGroups : public XtTest {};

TEST_F(FaultsOfXtGroups, GoAsTold) {
    ExpectEachStory(Table);
}

TEST_F(FaultsOfXtGroups, AreToldOfEveryCall) {
    ExpectEveryCallFails(Table);
}

TEST_F(FaultsOfXtGroups, LoseNothing) {
    ExpectNothingIsLost(Table);
}

}  // namespace
}  // namespace SocketTests

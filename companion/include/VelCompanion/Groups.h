// Names for the modes of SocketXt::SetSocketForMulticast.
#pragma once

#include <VelNet/SocketXt.h>

namespace VelCompanion {

// The modes.
inline constexpr int JOIN_GROUP = 0;
inline constexpr int LEAVE_GROUP = 1;

// Join and leave a multicast group, "239.1.2.3" for instance, on the system's default interface.
// The group must not be null.
//
// Throw: what SocketXt::SetSocketForMulticast throws
inline void JoinGroup(VelNet::SocketXt& socket, const char* group) {
    socket.SetSocketForMulticast(group, JOIN_GROUP);
}
inline void LeaveGroup(VelNet::SocketXt& socket, const char* group) {
    socket.SetSocketForMulticast(group, LEAVE_GROUP);
}

}  // namespace VelCompanion

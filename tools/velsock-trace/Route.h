// The addresses of a conversation's packets.
#pragma once

#include <array>
#include <string>

#include "Conversation.h"

namespace VelSockTrace {

struct Routes {
    std::array<Endpoint, 2> ends;  // of one IP version, with ports
    std::string remark;            // which of it is made up; empty if nothing is
};

// What the records do not tell is made up: the loopback address beside another one, or else one
// that is reserved for documentation; a port that no other conversation is likely to have.
Routes RoutesOf(const Conversation& conversation);

}  // namespace VelSockTrace

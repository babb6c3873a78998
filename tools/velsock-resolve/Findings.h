// What an examination has found.
#pragma once

#include <string>
#include <vector>

namespace VelSockResolve {

struct Finding {
    std::string topic;
    bool works;
    std::string text;    // what is so, and why
    std::string remedy;  // empty if nothing needs one
};

using Findings = std::vector<Finding>;

// This computer's name and addresses, and which IP version sockets get.
Findings ExamineNames();

// The settings: name servers, domain, the settings tree.
Findings ExamineSettings();

// Ways into the network: sockets of both IP versions, broadcast, multicast.
Findings ExamineRoutes();

}  // namespace VelSockResolve

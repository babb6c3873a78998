// The addresses of a host that a socket can use, and how they fail.
#pragma once

#include <VelCompanion/Waiting.h>
#include <VelNet/Exception.h>
#include <VelNet/SocketXt.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "SystemNetwork.h"

namespace VelSockCat {

// What the system's resolver has answered.
struct LookedUp {
    std::vector<VelSockTools::HostAddress> addresses;
    std::optional<VelNet::Exception> failure;  // if there are none
};

// Looks the host up once, and gives up when the time is over.
LookedUp LookUpWithin(const std::string& host, const VelCompanion::Deadline& deadline);

struct Addresses {
    std::vector<std::string> usable;      // numeric; the host itself if the library resolves it
    std::vector<std::string> passedOver;  // why, a line for each of the others
    std::optional<VelNet::Exception> failure;  // if the host has none at all
};

// The library tries all addresses of a host and reports the failure of the last, which may be one
// that the socket cannot use at all. So they are to be tried one by one.
Addresses AddressesFor(const VelNet::SocketXt& socket, const std::string& host,
                       const VelCompanion::Deadline& deadline);

// That no address was accepted.
struct Refusal {
    VelNet::Exception last;
    std::vector<std::string> attempts;  // a line for each address
};

// Passes the usable addresses to attempt until one does not throw VelNet::Exception, or the time is
// over after one that does. If the program is verbose, it shows then which ones came before.
[[nodiscard]] std::optional<Refusal> TryEach(
    const Addresses& addresses, const std::function<void(const std::string&)>& attempt,
    const VelCompanion::Deadline& deadline = VelCompanion::Deadline(VelCompanion::NoLimit));

}  // namespace VelSockCat

#include "HandleCommands.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <stdexcept>

namespace Network {

Words AskForReports(Host& host, const Words& words) {
    const VelNet::SocketXt& socket = host.FindExtended(words[1]);
    const bool ipv6 = socket.GetAddressFamily() == VelNet::SocketXt::FAMILY_IPV6;
    const int level = ipv6 ? IPPROTO_IPV6 : IPPROTO_IP;
    const int option = ipv6 ? IPV6_RECVERR : IP_RECVERR;
    const int on = 1;
    if (setsockopt(static_cast<int>(socket.GetHandle()), level, option, &on, sizeof on) != 0) {
        throw std::runtime_error("there are no reports");
    }
    return {};
}

}  // namespace Network

#include "sockets/TcpState.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace Posix {

int TcpState(int descriptor) noexcept {
    tcp_info information = {};
    socklen_t length = sizeof information;
    const int result = ::getsockopt(descriptor, IPPROTO_TCP, TCP_INFO, &information, &length);
    return result == 0 ? information.tcpi_state : result;
}

}  // namespace Posix

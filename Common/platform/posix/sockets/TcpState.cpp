#include "sockets/TcpState.h"

#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace Posix {

namespace {

// Returns a negative number with errno if the kernel does not tell.
int AskKernel(int descriptor, tcp_info& information) noexcept {
    socklen_t length = sizeof information;
    return ::getsockopt(descriptor, IPPROTO_TCP, TCP_INFO, &information, &length);
}

}  // namespace

int TcpState(int descriptor) noexcept {
    tcp_info information = {};
    const int result = AskKernel(descriptor, information);
    return result == 0 ? information.tcpi_state : result;
}

bool IsOwnEndAcknowledged(const Socket& socket) noexcept {
    tcp_info information = {};
    if (AskKernel(socket.descriptor, information) < 0) return false;
    // The FIN counts as a byte, and so does the SYN of the side that connected.
    const unsigned int beginning = socket.Has(Flag::Accepted) ? 0 : 1;
    const auto bytes = information.tcpi_bytes_sent - information.tcpi_bytes_retrans;
    return information.tcpi_bytes_acked == beginning + bytes + 1;
}

}  // namespace Posix

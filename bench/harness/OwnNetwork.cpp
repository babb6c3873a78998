#include "OwnNetwork.h"

#include "RawSockets.h"

#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

namespace Bench {
namespace {

// Only root has a network without being root of something else first.
bool LeaveNetwork() noexcept {
    return ::unshare(CLONE_NEWNET) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0;
}

// Where there is no such setting, there is no IPv6 either.
void DisableIpv6() {
    const Descriptor setting(
        ::open("/proc/sys/net/ipv6/conf/all/disable_ipv6", O_WRONLY | O_CLOEXEC));
    if (setting.Number() == -1 && errno == ENOENT) return;
    Checked(::write(setting.Number(), "1", 1), "disable_ipv6");
}

void StartLoopback() {
    const Descriptor socket = CreateRawSocket(SOCK_DGRAM);
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    request.ifr_flags = IFF_UP;
    Checked(::ioctl(socket.Number(), SIOCSIFFLAGS, &request), "ioctl");
}

}  // namespace

void EnterOwnNetwork() {
    if (!LeaveNetwork()) {
        std::fputs("bench: no own network can be had; extended sockets may be IPv6 ones\n", stderr);
        return;
    }
    DisableIpv6();
    StartLoopback();
}

}  // namespace Bench

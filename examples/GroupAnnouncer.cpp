// Announces a text to every member of a multicast group. Needs no membership of its own.
//
//   GroupAnnouncer GROUP PORT TEXT      239.1.2.3 for instance; ff15::1 where sockets speak IPv6
#include <VelCompanion/Errors.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>

#include <cstdio>
#include <string>

int main(int count, char** words) try {
    if (count != 4) {
        std::fputs("usage: GroupAnnouncer GROUP PORT TEXT\n", stderr);
        return 2;
    }
    const std::string text = words[3];
    const VelNet::SocketInitialization socketLayer;
    const auto socket =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_DATAGRAM, VelNet::Socket::PROTOCOL_UDP);
    socket->SendTo(text.data(), static_cast<int>(text.size()), words[1], words[2]);
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}

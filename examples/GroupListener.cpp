// Joins a multicast group and prints what is announced there.
//
//   GroupListener GROUP PORT COUNT      ends after that many announcements
#include <VelCompanion/Errors.h>
#include <VelCompanion/Groups.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>

#include <cstdio>
#include <cstdlib>

namespace {

void PrintOne(VelNet::SocketXt& socket) {
    char block[1500];
    VelBase::ReturnString host;
    VelBase::ReturnString port;
    const int length = socket.RecvFrom(block, sizeof block, host, port);
    std::printf("%.*s\n", length, block);
    std::fflush(stdout);
}

}  // namespace

int main(int count, char** words) try {
    if (count != 4) {
        std::fputs("usage: GroupListener GROUP PORT COUNT\n", stderr);
        return 2;
    }
    const VelNet::SocketInitialization socketLayer;
    const auto socket =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_DATAGRAM, VelNet::Socket::PROTOCOL_UDP);
    socket->SetReuseAddress();  // so that several listeners share the port
    socket->Bind(VelNet::SPECIAL_ANY, words[2]);
    VelCompanion::JoinGroup(*socket, words[1]);
    std::puts("joined");
    std::fflush(stdout);
    for (int left = std::atoi(words[3]); left > 0; --left)
        PrintOne(*socket);
    VelCompanion::LeaveGroup(*socket, words[1]);
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}

// Prints each datagram with its sender, and answers it with its length.
//
//   DatagramReceiver PORT COUNT      ends after that many datagrams
#include <VelCompanion/Errors.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// One datagram of any length: 65,507 bytes is the longest that IPv4 has.
void ReceiveOne(VelNet::SocketXt& socket) {
    char block[65507];
    VelBase::ReturnString host;
    VelBase::ReturnString port;
    const int length = socket.RecvFrom(block, sizeof block, host, port);
    std::printf("%.*s\n", length, block);
    std::fflush(stdout);
    const std::string answer = std::to_string(length) + " bytes";
    socket.SendTo(answer.data(), static_cast<int>(answer.size()), host.c_str(), port.c_str());
}

}  // namespace

int main(int count, char** words) try {
    if (count != 3) {
        std::fputs("usage: DatagramReceiver PORT COUNT\n", stderr);
        return 2;
    }
    const VelNet::SocketInitialization socketLayer;
    const auto socket =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_DATAGRAM, VelNet::Socket::PROTOCOL_UDP);
    socket->Bind(VelNet::SPECIAL_LOOPBACK, words[1]);
    std::puts("waiting");
    std::fflush(stdout);
    for (int left = std::atoi(words[2]); left > 0; --left)
        ReceiveOne(*socket);
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}

// Sends a greeting to the server on this machine and prints what comes back.
#include <VelCompanion/Errors.h>
#include <VelCompanion/Transfers.h>
#include <VelNet/Socket.h>

#include <cstdio>

int main() try {
    const VelNet::SocketInitialization socketLayer;
    const auto addresses = VelNet::SocketAddress::GetOctetsFromMachineName("localhost");
    const auto socket =
        VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    socket->Connect(addresses->GetOctets(0), 4000);
    VelCompanion::SendAll(*socket, "hello");
    const auto answer = VelCompanion::ReceiveExactly(*socket, 5);
    std::printf("%s\n", answer.c_str());
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}

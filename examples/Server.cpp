// Waits for one client and sends back what it sent.
#include <VelCompanion/Errors.h>
#include <VelCompanion/Transfers.h>
#include <VelNet/Socket.h>

#include <cstdio>

int main() try {
    const VelNet::SocketInitialization socketLayer;
    const auto listener =
        VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    listener->Bind(VelNet::Octets(127, 0, 0, 1), 4000);
    listener->Listen();
    VelNet::SocketAddress client;
    const auto socket = listener->Accept(client);
    char block[4096];
    while (const auto received = VelCompanion::ReceiveSome(*socket, block, sizeof block))
        VelCompanion::SendAll(*socket, {block, received});
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}

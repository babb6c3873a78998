// Echoes to one client after the other what it sends. Speaks IPv4 or IPv6, as this computer does.
//
//   EchoServer PORT
#include <VelCompanion/Errors.h>
#include <VelCompanion/Transfers.h>
#include <VelNet/Exception.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>

#include <cstdio>

namespace {

// Returns whether the client ended the connection in good order.
bool Echo(VelNet::SocketXt& client) try {
    char block[4096];
    while (const auto length = VelCompanion::ReceiveSome(client, block, sizeof block))
        VelCompanion::SendAll(client, {block, length});
    return true;
} catch (const VelNet::Exception&) {
    return false;
}

}  // namespace

int main(int count, char** words) try {
    if (count != 2) {
        std::fputs("usage: EchoServer PORT\n", stderr);
        return 2;
    }
    const VelNet::SocketInitialization socketLayer;
    const auto listener =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    listener->Bind(VelNet::SPECIAL_LOOPBACK, words[1]);
    listener->Listen();
    std::puts("listening");
    std::fflush(stdout);
    for (;;) {
        VelBase::ReturnPtrI<VelNet::SocketXt> client;
        VelBase::ReturnString host;
        VelBase::ReturnString port;
        listener->Accept(client, host, port);
        const char* const end = Echo(*client) ? "closed" : "lost";
        std::printf("%s port %s %s\n", host.c_str(), port.c_str(), end);
        std::fflush(stdout);
    }
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}

// Waits for one client and sends back what it sent.
#include <VelBase/TextConversions.h>
#include <VelNet/Exception.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketInitialization.h>

#include <cstdio>

int main() try {
    const VelNet::SocketInitialization socketLayer;
    const auto listener =
        VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    listener->Bind(VelNet::Octets(127, 0, 0, 1), 4000);
    listener->Listen();
    VelNet::SocketAddress client;
    const auto socket = listener->Accept(client);
    char request[64];
    const int received = socket->Receive(request, sizeof request);
    socket->Send(request, received);
} catch (const VelNet::Exception& failure) {
    const auto text = VelBase::WideCharToUTF8(failure.GetMessage(), false);
    std::fprintf(stderr, "%s (code %d)\n", text.c_str(), failure.GetErrorCode());
    return 1;
}

// Sends a greeting to the server on this machine and prints what comes back.
#include <VelBase/TextConversions.h>
#include <VelNet/Exception.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketInitialization.h>

#include <cstdio>

int main() try {
    const VelNet::SocketInitialization socketLayer;
    const auto addresses = VelNet::SocketAddress::GetOctetsFromMachineName("localhost");
    const auto socket =
        VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    socket->Connect(addresses->GetOctets(0), 4000);
    socket->Send("hello", 5);
    char answer[64];
    const int received = socket->Receive(answer, sizeof answer);
    std::printf("%.*s\n", received, answer);
} catch (const VelNet::Exception& failure) {
    const auto text = VelBase::WideCharToUTF8(failure.GetMessage(), false);
    std::fprintf(stderr, "%s (code %d)\n", text.c_str(), failure.GetErrorCode());
    return 1;
}

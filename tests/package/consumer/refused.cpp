// Says what it means that nobody listens at a port.
#include <VelCompanion/Errors.h>
#include <VelNet/Exception.h>
#include <VelNet/Octets.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketInitialization.h>

#include <cstdio>

int main() try {
    const VelNet::SocketInitialization socketLayer;
    const auto socket =
        VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    socket->Connect(VelNet::Octets(127, 0, 0, 1), 4001);
    return 1;
} catch (const VelNet::Exception& failure) {
    std::puts(VelCompanion::Describe(failure).c_str());
}

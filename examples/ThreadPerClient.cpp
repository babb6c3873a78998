// Serves each client in a thread of its own: the connection moves into the thread and ends with it.
//
//   ThreadPerClient PORT CLIENTS      ends when it has served that many; port 0 lets the system
//   choose
#include <VelCompanion/Errors.h>
#include <VelCompanion/Transfers.h>
#include <VelNet/Exception.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketInitialization.h>

#include <cstdio>
#include <cstdlib>
#include <future>
#include <vector>

namespace {

using SocketOwner = VelBase::ReturnPtrI<VelNet::Socket>;

// Reference counts are plain integers: from here on only this thread uses the socket.
void Serve(SocketOwner client) try {
    char block[4096];
    while (const auto length = VelCompanion::ReceiveSome(*client, block, sizeof block))
        VelCompanion::SendAll(*client, {block, length});
    std::puts("closed");
} catch (const VelNet::Exception&) {
    std::puts("lost");
}

SocketOwner Listening(int port) {
    auto listener =
        VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    listener->Bind(VelNet::Octets(127, 0, 0, 1), static_cast<unsigned short>(port));
    listener->Listen();
    std::printf("listening on port %d\n", listener->GetLocalAddress().GetPort());
    std::fflush(stdout);
    return listener;
}

}  // namespace

int main(int count, char** words) try {
    if (count != 3) {
        std::fputs("usage: ThreadPerClient PORT CLIENTS\n", stderr);
        return 2;
    }
    const VelNet::SocketInitialization socketLayer;
    const SocketOwner listener = Listening(std::atoi(words[1]));
    std::vector<std::future<void>> threads;  // their destructors wait for the threads
    for (int left = std::atoi(words[2]); left > 0; --left) {
        VelNet::SocketAddress address;
        threads.push_back(std::async(std::launch::async, Serve, listener->Accept(address)));
    }
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}

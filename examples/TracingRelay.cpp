// Passes on what one client and a server say to each other, and shows each transfer on standard
// error.
//
//   TracingRelay PORT HOST SERVER_PORT      port 0 lets the system choose
//
// The library cannot close one direction alone: the first side that ends its sending ends both.
#include <VelCompanion/Errors.h>
#include <VelCompanion/Owners.h>
#include <VelCompanion/Transfers.h>
#include <VelLog/LogControl.h>
#include <VelLog/StandardErrorSink.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketInitialization.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace {

using SocketOwner = VelBase::ReturnPtrI<VelNet::Socket>;

unsigned short PortFrom(const char* word) {
    return static_cast<unsigned short>(std::atoi(word));
}

SocketOwner Stream() {
    return VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
}

SocketOwner AcceptOne(unsigned short port) {
    const auto listener = Stream();
    listener->Bind(VelNet::Octets(127, 0, 0, 1), port);
    listener->Listen();
    std::printf("listening on port %d\n", listener->GetLocalAddress().GetPort());
    std::fflush(stdout);
    VelNet::SocketAddress address;
    return listener->Accept(address);
}

SocketOwner ConnectTo(const char* host, unsigned short port) {
    const auto addresses = VelNet::SocketAddress::GetOctetsFromMachineName(host);
    auto server = Stream();
    server->Connect(addresses->GetOctets(0), port);
    return server;
}

void Pass(VelNet::Socket& from, VelNet::Socket& to) {
    char block[16384];
    const int length = from.Receive(block, sizeof block);
    VelCompanion::SendAll(to, {block, static_cast<std::size_t>(length)});
}

// One thread for both directions, so that no record is written while another thread closes.
void Relay(VelNet::Socket& client, VelNet::Socket& server) {
    const auto both = VelCompanion::MakeCollection();
    for (VelNet::Socket* const side : {&client, &server}) {
        both->Add(side, VelNet::EVENT_READ);
        both->Add(side, VelNet::EVENT_CLOSE);
    }
    for (;;) {
        constexpr unsigned int seconds = 3600;
        const auto ready = VelCompanion::Select(*both, seconds);
        if (!ready) continue;
        for (unsigned int index = 0; index < ready->GetCount(); ++index) {
            if (ready->GetEvent(index) == VelNet::EVENT_CLOSE) return;
            VelNet::Socket& from = *ready->GetSocket(index);
            Pass(from, from.IsSameSocket(client) ? server : client);
        }
    }
}

}  // namespace

int main(int count, char** words) try {
    if (count != 4) {
        std::fputs("usage: TracingRelay PORT HOST SERVER_PORT\n", stderr);
        return 2;
    }
    VelLog::StandardErrorSink sink;
    const VelCompanion::SinkInUse sinkInUse(sink);
    VelLog::SetRouterEnabled(VelLog::ROUTER_NETWORK, VelLog::CATEGORY_CONNECTION_TRACE, true);
    VelLog::SetRouterEnabled(VelLog::ROUTER_NETWORK, VelLog::CATEGORY_PACKET_TRACE, true);
    const VelNet::SocketInitialization socketLayer;
    const SocketOwner client = AcceptOne(PortFrom(words[1]));
    const SocketOwner server = ConnectTo(words[2], PortFrom(words[3]));
    Relay(*client, *server);
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}

#include "Ends.h"

#include <VelCompanion/Pairs.h>
#include <VelNet/SocketCollection.h>

#include <memory>

#include "support/RawPeer.h"

namespace Soak {

namespace {

using namespace VelNet;

constexpr unsigned int LongestWait = 60'000;

struct Destroyer {
    void operator()(SocketCollection* set) const { set->Destroy(); }
};
using Set = std::unique_ptr<SocketCollection, Destroyer>;

VelBase::ReturnPtrI<SocketXt> BoundExtended(Socket::SOCKET_TYPE type,
                                            Socket::SOCKET_PROTOCOL protocol,
                                            SocketXt::ADDR_FAMILY family) {
    auto socket = CreateSocketXt(type, protocol, family);
    socket->Bind(LoopbackOf(family), "0");
    return socket;
}

}  // namespace

std::string Payload(Random& random, std::size_t size) {
    std::string bytes(size, '\0');
    std::uint64_t state = random();
    for (char& byte : bytes) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        byte = static_cast<char>(state >> 56);
    }
    return bytes;
}

std::uint64_t Checksum(const std::string& bytes) {
    std::uint64_t sum = 0xCBF29CE484222325U;
    for (const char byte : bytes)
        sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
    return sum;
}

void LimitWaiting(Socket& socket) {
    socket.SetReceiveTimeout(LongestWait);
    socket.SetSendTimeout(LongestWait);
}

void WaitUntilReadable(Socket& socket) {
    const Set set(CreateSocketCollection());
    set->Add(&socket, EVENT_READ);
    const Set ready(set->Select(LongestWait / 1000));
    Require(ready != nullptr && ready->GetCount() == 1, "the set reports what can be read");
    Require(ready->GetSocket(0)->IsSameSocket(socket), "the set reports the socket itself");
}

Ends<Socket> ConnectClassicStreams() {
    VelCompanion::SocketPair pair = VelCompanion::MakeSocketPair();
    return {std::move(pair.first), std::move(pair.second)};
}

Ends<Socket> ConnectClassicDatagrams() {
    const Octets loopback(127, 0, 0, 1);
    Ends<Socket> ends;
    for (auto& end : ends) {
        end = CreateSocket(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP);
        end->Bind(loopback, 0);
    }
    for (const std::size_t end : {0U, 1U})
        ends[end]->Connect(loopback, ends[1 - end]->GetLocalAddress().GetPort());
    return ends;
}

Ends<Socket> ConnectExtendedStreams(SocketXt::ADDR_FAMILY family) {
    const auto listener = BoundExtended(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP, family);
    listener->Listen();
    const auto client = CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP, family);
    client->Connect(LoopbackOf(family), PortOf(*listener).c_str());
    VelBase::ReturnPtrI<SocketXt> accepted;
    VelBase::ReturnString host;
    VelBase::ReturnString port;
    listener->Accept(accepted, host, port);
    Require(PortOf(*client) == port.c_str(), "the client's port is told");
    return {VelBase::ReturnPtrI<Socket>(client.Get()), VelBase::ReturnPtrI<Socket>(accepted.Get())};
}

Ends<SocketXt> BindExtendedDatagrams(SocketXt::ADDR_FAMILY family) {
    return {BoundExtended(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP, family),
            BoundExtended(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP, family)};
}

const char* LoopbackOf(SocketXt::ADDR_FAMILY family) {
    return family == SocketXt::FAMILY_IPV6 ? "::1" : "127.0.0.1";
}

std::string PortOf(const SocketXt& socket) {
    return std::to_string(Support::LocalPortOf(socket.GetHandle()));
}

}  // namespace Soak

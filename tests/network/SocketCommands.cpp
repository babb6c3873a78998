#include "SocketCommands.h"

#include <VelNet/SocketCollection.h>

#include <memory>
#include <stdexcept>
#include <utility>

#include "HostWord.h"

namespace Network {

namespace {

using VelNet::Octets;
using VelNet::Socket;
using VelNet::SocketAddress;
using VelNet::SocketCollection;
using VelNet::SocketXt;

unsigned short PortOf(const std::string& word) {
    return static_cast<unsigned short>(std::stoul(word));
}

Octets FirstAddress(const std::string& host) {
    return SocketAddress::GetOctetsFromMachineName(host.c_str())->GetOctets(0);
}

const char* FamilyOf(const SocketXt& socket) {
    switch (socket.GetAddressFamily()) {
        case SocketXt::FAMILY_IPV4:
            return "ipv4";
        case SocketXt::FAMILY_IPV6:
            return "ipv6";
        default:
            return "unknown";
    }
}

// Closes a listing or its result with the scope.
struct Destroyer {
    void operator()(SocketCollection* collection) const { collection->Destroy(); }
};
using Collection = std::unique_ptr<SocketCollection, Destroyer>;

Words AcceptExtended(Host& host, SocketXt& listener, const std::string& name) {
    VelBase::ReturnPtrI<SocketXt> accepted;
    VelBase::ReturnString peer;
    VelBase::ReturnString port;
    listener.Accept(accepted, peer, port);
    host.Add(name, std::move(accepted));
    return {peer.c_str(), port.c_str()};
}

Words AcceptClassic(Host& host, Socket& listener, const std::string& name) {
    SocketAddress peer;
    host.Add(name, listener.Accept(peer));
    return {peer.GetOctets().GetAddressString().c_str(), std::to_string(peer.GetPort())};
}

}  // namespace

Words Create(Host& host, const Words& words) {
    const std::string& kind = words[2];
    const bool datagram = kind.ends_with("datagram");
    if (!datagram && !kind.ends_with("stream")) throw std::runtime_error("no kind of socket");
    const auto type = datagram ? Socket::SOCKET_DATAGRAM : Socket::SOCKET_STREAM;
    const auto protocol = datagram ? Socket::PROTOCOL_UDP : Socket::PROTOCOL_TCP;
    if (kind.starts_with("classic-")) {
        host.Add(words[1], VelNet::CreateSocket(type, protocol));
        return {"ipv4"};
    }
    return {FamilyOf(*host.Add(words[1], VelNet::CreateSocketXt(type, protocol)).extended)};
}

Words Bind(Host& host, const Words& words) {
    const NamedSocket& named = host.Find(words[1]);
    if (!named.extended) {
        named.socket->Bind(FirstAddress(words[2]), PortOf(words[3]));
        return {};
    }
    WithHost(words[2], [&](auto address) { named.extended->Bind(address, words[3].c_str()); });
    return {};
}

Words Listen(Host& host, const Words& words) {
    host.Find(words[1]).socket->Listen();
    return {};
}

Words Accept(Host& host, const Words& words) {
    const NamedSocket& named = host.Find(words[1]);
    return named.extended ? AcceptExtended(host, *named.extended, words[2])
                          : AcceptClassic(host, *named.socket, words[2]);
}

Words Connect(Host& host, const Words& words) {
    const NamedSocket& named = host.Find(words[1]);
    if (!named.extended) {
        named.socket->Connect(FirstAddress(words[2]), PortOf(words[3]));
        return {};
    }
    WithHost(words[2], [&](auto address) { named.extended->Connect(address, words[3].c_str()); });
    return {};
}

Words Close(Host& host, const Words& words) {
    host.Find(words[1]).socket->Close();
    return {};
}

Words SetTimeouts(Host& host, const Words& words) {
    const NamedSocket& named = host.Find(words[1]);
    const auto milliseconds = static_cast<unsigned int>(std::stoul(words[2]));
    named.socket->SetSendTimeout(milliseconds);
    named.socket->SetReceiveTimeout(milliseconds);
    return {};
}

Words SetNonBlocking(Host& host, const Words& words) {
    if (!host.Find(words[1]).socket->SetNonBlocking()) throw std::runtime_error("it is blocking");
    return {};
}

Words SetBroadcast(Host& host, const Words& words) {
    host.FindExtended(words[1]).SetSocketForBroadcast();
    return {};
}

Words SetMulticast(Host& host, const Words& words) {
    SocketXt& socket = host.FindExtended(words[1]);
    const int mode = std::stoi(words[3]);
    WithHost(words[2], [&](auto group) { socket.SetSocketForMulticast(group, mode); });
    return {};
}

Words Select(Host& host, const Words& words) {
    const Collection watched(VelNet::CreateSocketCollection());
    watched->Add(host.Find(words[1]).socket.Get(), std::stoi(words[2]));
    const Collection ready(watched->Select(static_cast<unsigned int>(std::stoul(words[3]))));
    if (!ready || ready->GetCount() != 1) return {};
    return {std::to_string(ready->GetEvent(0))};
}

}  // namespace Network

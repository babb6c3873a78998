#include "faults/scenes/Scene.h"

#include <chrono>
#include <iterator>
#include <utility>

namespace Faults {

namespace {

constexpr unsigned int Patience = 1'000;

SocketPtr WithPatience(SocketPtr socket) {
    socket->SetReceiveTimeout(Patience);
    socket->SetSendTimeout(Patience);
    return socket;
}

}  // namespace

std::vector<Scene> Scenes() {
    std::vector<Scene> all;
    for (auto part :
         {LayerScenes, ClassicScenes, ExtendedScenes, ExtendedDatagramScenes, CollectionScenes,
          NameScenes, ValueScenes, TextScenes, LogScenes, CompanionScenes}) {
        std::vector<Scene> scenes = part();
        std::move(scenes.begin(), scenes.end(), std::back_inserter(all));
    }
    return all;
}

std::vector<Scene> ScenesOf(std::size_t part) {
    const std::vector<Scene> all = Scenes();
    std::vector<Scene> scenes;
    for (std::size_t each = part; each < all.size(); each += SceneParts)
        scenes.push_back(all[each]);
    return scenes;
}

VelNet::Octets Loopback() {
    return {127, 0, 0, 1};
}

SocketPtr Stream() {
    return WithPatience(
        VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP));
}

SocketPtr Datagram() {
    return WithPatience(
        VelNet::CreateSocket(VelNet::Socket::SOCKET_DATAGRAM, VelNet::Socket::PROTOCOL_UDP));
}

SocketPtr Listener() {
    SocketPtr listener = Stream();
    listener->Bind(Loopback(), 0);
    listener->Listen();
    return listener;
}

Ends Connected() {
    const SocketPtr listener = Listener();
    SocketPtr client = Stream();
    client->Connect(Loopback(), listener->GetLocalAddress().GetPort());
    VelNet::SocketAddress peer;
    SocketPtr server = listener->Accept(peer);
    Require(bool(server), "a blocking listener accepted nothing");
    return {std::move(client), std::move(server)};
}

void SendWhole(VelNet::Socket& socket, const std::string& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const int sent = socket.Send(bytes.data() + done, static_cast<int>(bytes.size() - done));
        Require(sent > 0, "nothing was sent");
        done += static_cast<std::size_t>(sent);
    }
}

std::string ReceiveWhole(VelNet::Socket& socket, std::size_t count) {
    std::string bytes(count, '\0');
    for (std::size_t done = 0; done < count;) {
        const int come = socket.Receive(bytes.data() + done, static_cast<int>(count - done));
        Require(come > 0, "nothing was received");
        done += static_cast<std::size_t>(come);
    }
    return bytes;
}

ClosedAfterAWhile::ClosedAfterAWhile(VelNet::Socket& socket)
    : closed_(socket, std::chrono::seconds(2)) {}

void Require(bool condition, const char* what) {
    if (!condition) throw Broken(what);
}

}  // namespace Faults

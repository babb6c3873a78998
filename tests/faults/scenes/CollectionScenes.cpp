#include <VelCompanion/Owners.h>
#include <VelNet/SocketCollection.h>
#include <VelNet/SocketInitialization.h>

#include "faults/scenes/Scene.h"

namespace Faults {

namespace {

using VelCompanion::CollectionOwner;

CollectionOwner ReadyOf(VelNet::SocketCollection& collection) {
    return CollectionOwner(collection.Select(1));
}

std::string EventsOf(const CollectionOwner& ready) {
    if (!ready) return "nothing\n";
    std::string text;
    for (unsigned int index = 0; index < ready->GetCount(); ++index) {
        Require(ready->GetSocket(index)->IsValid(), "a closed socket is ready");
        text += Line(ready->GetEvent(index));
    }
    return text;
}

std::string Entries() {
    const VelNet::SocketInitialization layer;
    const CollectionOwner collection(VelNet::CreateSocketCollection());
    std::string text = EventsOf(ReadyOf(*collection));
    const SocketPtr one = Stream();
    const SocketPtr other = Stream();
    collection->Add(one.Get(), VelNet::EVENT_READ);
    collection->Add(other.Get(), VelNet::EVENT_WRITE);
    text += Line(collection->GetCount()) + Line(collection->Find(other.Get(), 2));
    collection->Remove(one.Get(), VelNet::EVENT_READ);
    text += Line(collection->GetCount()) + Line(collection->GetEvent(0));
    return text + Line(collection->GetSocket(0)->IsSameSocket(*other));
}

std::string Selection() {
    const VelNet::SocketInitialization layer;
    const CollectionOwner collection(VelNet::CreateSocketCollection());
    const SocketPtr listener = Listener();
    collection->Add(listener.Get(), VelNet::EVENT_ACCEPT);
    const SocketPtr client = Stream();
    client->Connect(Loopback(), listener->GetLocalAddress().GetPort());
    std::string text = EventsOf(ReadyOf(*collection));
    VelNet::SocketAddress peer;
    const SocketPtr server = listener->Accept(peer);
    Require(bool(server), "a blocking listener accepted nothing");
    collection->Add(client.Get(), VelNet::EVENT_WRITE);
    collection->Add(server.Get(), VelNet::EVENT_READ);
    SendWhole(*client, "x");
    text += EventsOf(ReadyOf(*collection)) + ReceiveWhole(*server, 1);
    collection->Remove(client.Get(), VelNet::EVENT_WRITE);
    collection->Remove(server.Get(), VelNet::EVENT_READ);
    collection->Add(server.Get(), VelNet::EVENT_CLOSE);
    client->Close();
    text += EventsOf(ReadyOf(*collection));
    collection->Remove(server.Get(), VelNet::EVENT_CLOSE);
    return text + EventsOf(CollectionOwner(collection->Select(0)));
}

std::string Refusals() {
    const VelNet::SocketInitialization layer;
    const CollectionOwner collection(VelNet::CreateSocketCollection());
    const SocketPtr closed = Stream();
    closed->Close();
    collection->Add(closed.Get(), VelNet::EVENT_READ);
    return OutcomeOf(VelNet::SOCKET_ERR_NOTSOCK, [&] { ReadyOf(*collection); });
}

std::string Datagrams() {
    const VelNet::SocketInitialization layer;
    const CollectionOwner collection(VelNet::CreateSocketCollection());
    const SocketPtr one = Datagram();
    one->Bind(Loopback(), 0);
    const SocketPtr other = Datagram();
    other->Connect(Loopback(), one->GetLocalAddress().GetPort());
    (void)other->Send("datagram", 8);
    collection->Add(one.Get(), VelNet::EVENT_READ);
    collection->Add(other.Get(), VelNet::EVENT_WRITE);
    return EventsOf(ReadyOf(*collection));
}

}  // namespace

std::vector<Scene> CollectionScenes() {
    return {{"collection", Entries},
            {"selection", Selection},
            {"selection refused", Refusals},
            {"selection of datagrams", Datagrams}};
}

}  // namespace Faults

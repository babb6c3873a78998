// The code of docs/sets.md.
#include <VelCompanion/Owners.h>
#include <VelCompanion/Transfers.h>
#include <VelNet/SocketCollection.h>
#include <loopback/LoopbackTest.h>

#include <cstddef>
#include <vector>

namespace {

void Serve(VelNet::Socket& socket, int event, VelNet::SocketCollection& sockets) {
    if (event == VelNet::EVENT_ACCEPT) {
        VelNet::SocketAddress address;
        const auto client = socket.Accept(address);
        sockets.Add(client.Get(), VelNet::EVENT_READ);
        sockets.Add(client.Get(), VelNet::EVENT_CLOSE);
    } else if (event == VelNet::EVENT_READ) {
        char block[4096];
        const int length = socket.Receive(block, sizeof block);
        VelCompanion::SendAll(socket, {block, static_cast<std::size_t>(length)});
    } else {
        sockets.Remove(&socket, VelNet::EVENT_READ);
        sockets.Remove(&socket, VelNet::EVENT_CLOSE);
    }
}

// Passes back to each client what it sends, until nothing happens for a while.
void ServeUntilQuiet(VelNet::Socket& listener, VelNet::SocketCollection& sockets) {
    sockets.Add(&listener, VelNet::EVENT_ACCEPT);
    constexpr unsigned int seconds = 1;
    while (const auto ready = VelCompanion::Select(sockets, seconds)) {
        for (unsigned int index = 0; index < ready->GetCount(); ++index)
            Serve(*ready->GetSocket(index), ready->GetEvent(index), sockets);
    }
}

class SetsGuide : public Loopback::LoopbackTest {};

TEST_F(SetsGuide, OneThreadServesEveryClient) {
    const auto listener = Loopback::Listening();
    const auto sockets = VelCompanion::MakeCollection();
    // Connected and sent before the serving begins, so that it does not end too early.
    std::vector<Loopback::SocketPtr> clients;
    for (const char* const text : {"one", "two"}) {
        clients.push_back(Loopback::ConnectedTo(*listener));
        Loopback::SendAll(*clients.back(), text);
    }
    ServeUntilQuiet(*listener, *sockets);
    for (const char* const text : {"one", "two"}) {
        EXPECT_EQ(Loopback::ReceiveExactly(*clients.front(), 3), text);
        clients.erase(clients.begin());
    }
    ServeUntilQuiet(*listener, *sockets);
    // Both clients have gone; the listener was added twice.
    EXPECT_EQ(sockets->GetCount(), 2U);
}

}  // namespace

// Echoes to any number of clients. A collection waits for 64 sockets: each 63 clients share a
// thread with a collection of its own, in which the 64th socket is the one that wakes the thread.
//
//   ManyClients PORT      0 lets the system choose; the first line of output tells the port
#include <VelCompanion/Errors.h>
#include <VelCompanion/Owners.h>
#include <VelCompanion/Pairs.h>
#include <VelCompanion/Transfers.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketCollection.h>

#include <cstdio>
#include <cstdlib>
#include <list>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace {

using Client = VelBase::ReturnPtrI<VelNet::Socket>;

constexpr unsigned int MostClients = 63;

// A thread and its clients. A socket and all references to it belong to one thread: whoever accepts
// a client hands it over and keeps nothing of it.
class Room {
public:
    Room() : bell_(VelCompanion::MakeSocketPair()), thread_([this] { Serve(); }) {}

    ~Room() {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            isClosing_ = true;
        }
        VelCompanion::SendAll(*bell_.first, "!");
        thread_.join();
    }

    // Takes the client in, unless the room is full.
    bool TakeIn(Client& client) {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            if (clients_ == MostClients) return false;
            ++clients_;
            arriving_.push_back(std::move(client));
        }
        VelCompanion::SendAll(*bell_.first, "!");
        return true;
    }

private:
    void Serve() {
        const auto collection = VelCompanion::MakeCollection();
        collection->Add(bell_.second.Get(), VelNet::EVENT_READ);
        while (!IsClosing()) {
            constexpr unsigned int seconds = 60;
            const auto ready = VelCompanion::Select(*collection, seconds);
            const unsigned int count = ready ? ready->GetCount() : 0;
            for (unsigned int index = 0; index < count; ++index)
                Serve(*collection, *ready->GetSocket(index), ready->GetEvent(index));
        }
    }

    void Serve(VelNet::SocketCollection& collection, VelNet::Socket& socket, int event) {
        if (&socket == bell_.second.Get()) return LetIn(collection);
        if (event == VelNet::EVENT_READ && Echoes(socket)) return;
        collection.Remove(&socket, VelNet::EVENT_READ);
        collection.Remove(&socket, VelNet::EVENT_CLOSE);  // the last reference is that of ready
        const std::lock_guard<std::mutex> lock(mutex_);
        --clients_;
    }

    // One that does not read what it has sent is given up, so that it costs neither the memory nor
    // the time of the others; CollectionServer.cpp shows how to wait for it instead.
    static bool Echoes(VelNet::Socket& socket) try {
        char block[4096];
        const int received = socket.Receive(block, sizeof block);
        return socket.Send(block, received) == received;
    } catch (const VelNet::Exception&) {
        return false;  // the connection is lost
    }

    void LetIn(VelNet::SocketCollection& collection) {
        char rings[MostClients];
        static_cast<void>(bell_.second->Receive(rings, sizeof rings));
        std::vector<Client> arriving;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            arriving.swap(arriving_);
        }
        for (const Client& client : arriving) {
            collection.Add(client.Get(), VelNet::EVENT_READ);
            collection.Add(client.Get(), VelNet::EVENT_CLOSE);
        }
    }

    bool IsClosing() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return isClosing_;
    }

    const VelCompanion::SocketPair bell_;
    std::mutex mutex_;  // guards the next three
    std::vector<Client> arriving_;
    unsigned int clients_ = 0;
    bool isClosing_ = false;
    std::thread thread_;  // the last member: it uses the others
};

void TakeIn(std::list<Room>& rooms, Client client) {
    for (Room& room : rooms)
        if (room.TakeIn(client)) return;
    rooms.emplace_back().TakeIn(client);
}

void Serve(unsigned short port) {
    const auto listener =
        VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    listener->Bind(VelNet::Octets(127, 0, 0, 1), port);
    listener->Listen();
    std::printf("listening on port %d\n", listener->GetLocalAddress().GetPort());
    std::fflush(stdout);
    std::list<Room> rooms;
    VelNet::SocketAddress address;
    for (;;) {
        Client client = listener->Accept(address);
        client->SetNonBlocking();
        TakeIn(rooms, std::move(client));
    }
}

}  // namespace

int main(int count, char** words) try {
    const int port = count > 1 ? std::atoi(words[1]) : 4000;
    const VelNet::SocketInitialization socketLayer;
    Serve(static_cast<unsigned short>(port));
} catch (const VelNet::Exception& failure) {
    std::fprintf(stderr, "%s\n", VelCompanion::Describe(failure).c_str());
    return 1;
}

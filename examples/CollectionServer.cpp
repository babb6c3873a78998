// Echoes to each of many clients what it sends, all of them in one thread.
//
//   CollectionServer PORT      0 lets the system choose; the first line of output tells the port
#include <VelCompanion/Errors.h>
#include <VelCompanion/Owners.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketCollection.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

namespace {

using VelBase::ReturnPtrI;
using VelCompanion::CollectionOwner;
using VelNet::Socket;

constexpr std::size_t MostClients = 63;  // a collection waits for 64 sockets, the listener included

struct Client {
    std::string name;
    std::string pending;  // what its socket has not accepted yet
    unsigned long long echoed = 0;
};

class Server {
public:
    explicit Server(unsigned short port)
        : collection_(VelCompanion::MakeCollection()),
          listener_(VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP)) {
        listener_->Bind(VelNet::Octets(127, 0, 0, 1), port);
        listener_->Listen();
        listener_->SetNonBlocking();  // accepted sockets inherit it
        collection_->Add(listener_.Get(), VelNet::EVENT_ACCEPT);
        Tell("listening on " + NameOf(listener_->GetLocalAddress()));
    }

    void ServeOnce() {
        constexpr unsigned int seconds = 60;
        const CollectionOwner ready = VelCompanion::Select(*collection_, seconds);
        if (!ready) return;
        for (unsigned int index = 0; index < ready->GetCount(); ++index)
            Serve(*ready->GetSocket(index), ready->GetEvent(index));
    }

private:
    // An entry may belong to a client that was removed for an earlier entry.
    void Serve(Socket& socket, int event) {
        if (event == VelNet::EVENT_ACCEPT) return Accept();
        const auto found = clients_.find(&socket);
        if (found == clients_.end()) return;
        try {
            Serve(socket, found->second, event);
        } catch (const VelNet::Exception& failure) {
            End(socket, "lost by " + std::to_string(failure.GetErrorCode()));
        }
    }

    void Serve(Socket& socket, Client& client, int event) {
        if (event == VelNet::EVENT_CLOSE) return End(socket, "closed");
        if (event == VelNet::EVENT_READ) client.pending = Receive(socket);
        SendPending(socket, client);
        const bool waits = !client.pending.empty();
        if (waits && event == VelNet::EVENT_READ) WaitToWrite(socket);
        if (!waits && event == VelNet::EVENT_WRITE) WaitToRead(socket);
    }

    // A client that does not read is not read from either, so that at most one block is buffered
    // for it. An EVENT_CLOSE entry would make Select return at once as long as bytes are waiting.
    void WaitToWrite(Socket& socket) {
        collection_->Remove(&socket, VelNet::EVENT_READ);
        collection_->Remove(&socket, VelNet::EVENT_CLOSE);
        collection_->Add(&socket, VelNet::EVENT_WRITE);
    }

    void WaitToRead(Socket& socket) {
        collection_->Remove(&socket, VelNet::EVENT_WRITE);
        collection_->Add(&socket, VelNet::EVENT_READ);
        collection_->Add(&socket, VelNet::EVENT_CLOSE);
    }

    void Accept() {
        VelNet::SocketAddress address;
        const auto socket = listener_->Accept(address);
        if (!socket) return;  // the client has given up
        clients_[socket.Get()].name = NameOf(address);
        WaitToRead(*socket);
        if (clients_.size() == MostClients)
            collection_->Remove(listener_.Get(), VelNet::EVENT_ACCEPT);
    }

    static std::string Receive(Socket& socket) {
        char block[16384];
        return {block, static_cast<std::size_t>(socket.Receive(block, sizeof block))};
    }

    static void SendPending(Socket& socket, Client& client) {
        const int sent =
            socket.Send(client.pending.data(), static_cast<int>(client.pending.size()));
        client.pending.erase(0, static_cast<std::size_t>(sent));  // 0 if the send buffer is full
        client.echoed += static_cast<unsigned int>(sent);
    }

    void End(Socket& socket, const std::string& how) {
        const auto client = clients_.extract(&socket).mapped();
        Tell(client.name + " " + how + " after " + std::to_string(client.echoed) + " bytes");
        for (const int event : {VelNet::EVENT_READ, VelNet::EVENT_CLOSE, VelNet::EVENT_WRITE})
            collection_->Remove(&socket, event);
        if (clients_.size() + 1 == MostClients)
            collection_->Add(listener_.Get(), VelNet::EVENT_ACCEPT);
    }

    static std::string NameOf(const VelNet::SocketAddress& address) {
        return address.GetOctets().GetAddressString().c_str() +
               (" port " + std::to_string(address.GetPort()));
    }

    static void Tell(const std::string& line) {
        std::puts(line.c_str());
        std::fflush(stdout);
    }

    CollectionOwner collection_;
    ReturnPtrI<Socket> listener_;
    std::map<const Socket*, Client> clients_;
};

}  // namespace

int main(int count, char** words) try {
    const int port = count > 1 ? std::atoi(words[1]) : 4000;
    const VelNet::SocketInitialization socketLayer;
    Server server(static_cast<unsigned short>(port));
    for (;;)
        server.ServeOnce();
} catch (const VelNet::Exception& failure) {
    std::fprintf(stderr, "%s\n", VelCompanion::Describe(failure).c_str());
    return 1;
}

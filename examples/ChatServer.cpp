// Passes each line that one client says on to all others, in one thread.
//
//   ChatServer PORT      0 lets the system choose; the first line of output tells the port
#include <VelCompanion/Errors.h>
#include <VelCompanion/Owners.h>
#include <VelNet/Exception.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketCollection.h>
#include <VelNet/SocketInitialization.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

namespace {

using VelBase::ReturnPtrI;
using VelNet::Socket;
using VelNet::SocketCollection;

constexpr std::size_t MostClients = 63;  // a collection waits for 64 sockets, the listener included
constexpr std::size_t LongestLine = 1000;

using VelCompanion::CollectionOwner;

class Chat {
public:
    explicit Chat(unsigned short port)
        : collection_(VelCompanion::MakeCollection()),
          listener_(VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP)) {
        listener_->Bind(VelNet::Octets(127, 0, 0, 1), port);
        listener_->Listen();
        listener_->SetNonBlocking();  // accepted sockets inherit it
        collection_->Add(listener_.Get(), VelNet::EVENT_ACCEPT);
        std::printf("listening on port %d\n", listener_->GetLocalAddress().GetPort());
        std::fflush(stdout);
    }

    void ServeOnce() {
        constexpr unsigned int seconds = 60;
        const CollectionOwner ready = VelCompanion::Select(*collection_, seconds);
        if (!ready) return;
        for (unsigned int index = 0; index < ready->GetCount(); ++index)
            Serve(*ready->GetSocket(index), ready->GetEvent(index));
    }

private:
    // An entry may belong to a client that was dismissed for an earlier entry.
    void Serve(Socket& socket, int event) {
        if (event == VelNet::EVENT_ACCEPT) return Accept();
        if (!unfinished_.contains(&socket)) return;
        if (event == VelNet::EVENT_CLOSE || !Hear(socket)) Dismiss(socket);
    }

    void Accept() {
        VelNet::SocketAddress address;
        const auto socket = listener_->Accept(address);
        if (!socket || unfinished_.size() == MostClients) return;
        unfinished_[socket.Get()];
        collection_->Add(socket.Get(), VelNet::EVENT_READ);
        collection_->Add(socket.Get(), VelNet::EVENT_CLOSE);
    }

    // Returns false if the connection is lost, or its client says a line that is too long.
    bool Hear(Socket& speaker) try {
        char block[LongestLine];
        const int length = speaker.Receive(block, sizeof block);
        std::string& said = unfinished_[&speaker];
        said.append(block, static_cast<std::size_t>(length));
        for (auto end = said.find('\n'); end != std::string::npos; end = said.find('\n')) {
            TellOthers(speaker, said.substr(0, end + 1));
            said.erase(0, end + 1);
        }
        return said.size() <= LongestLine;
    } catch (const VelNet::Exception&) {
        return false;
    }

    void TellOthers(const Socket& speaker, const std::string& line) {
        for (auto next = unfinished_.begin(); next != unfinished_.end();) {
            Socket& listener = *next++->first;  // dismissing ends the entry
            if (!listener.IsSameSocket(speaker) && !Tell(listener, line)) Dismiss(listener);
        }
    }

    // Returns false if a client has not read so much that the line does not fit, or has gone.
    static bool Tell(Socket& listener, const std::string& line) try {
        const int length = static_cast<int>(line.size());
        return listener.Send(line.data(), length) == length;
    } catch (const VelNet::Exception&) {
        return false;
    }

    // The collection holds the only references: the socket closes when its entries end.
    void Dismiss(Socket& socket) {
        unfinished_.erase(&socket);
        collection_->Remove(&socket, VelNet::EVENT_READ);
        collection_->Remove(&socket, VelNet::EVENT_CLOSE);
    }

    CollectionOwner collection_;
    ReturnPtrI<Socket> listener_;
    std::map<Socket*, std::string> unfinished_;  // each client's last line, as far as it has come
};

}  // namespace

int main(int count, char** words) try {
    const int port = count > 1 ? std::atoi(words[1]) : 4000;
    const VelNet::SocketInitialization socketLayer;
    Chat chat(static_cast<unsigned short>(port));
    for (;;)
        chat.ServeOnce();
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}

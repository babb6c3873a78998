// Passes on datagrams between many clients and a server, each client by a socket of its own, until
// the standard input has a line, and then says how many there were.
//
//   peer_datagram_relay ipv4|ipv6 PORT HOST SERVER_PORT
#include <VelCompanion/Errors.h>
#include <VelCompanion/Owners.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>

#include <atomic>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>

#include "Words.h"

namespace {

using SocketOwner = VelBase::ReturnPtrI<VelNet::SocketXt>;

constexpr std::size_t MostClients = 63;  // a collection waits for 64 sockets

struct Client {
    std::string host;
    std::string port;
    SocketOwner socket;
};

struct Datagram {
    std::string bytes;
    std::string host;
    std::string port;
};

class Relay {
public:
    Relay(const char* family, const char* port, const char* host, const char* serverPort)
        : family_(Peers::FamilyFrom(family)),
          host_(host),
          serverPort_(serverPort),
          collection_(VelCompanion::MakeCollection()),
          listener_(NewSocket(port)) {}

    // Until the other thread says that it is enough.
    void Serve(const std::atomic<bool>& isEnough) {
        while (!isEnough) {
            const auto ready = VelCompanion::Select(*collection_, 1);
            if (!ready) continue;
            for (unsigned int index = 0; index < ready->GetCount(); ++index)
                Pass(*ready->GetSocket(index));
        }
    }

    void Tell() const {
        std::printf("%zu clients, %llu questions, %llu answers\n", clients_.size(), questions_,
                    answers_);
    }

private:
    SocketOwner NewSocket(const char* port) {
        SocketOwner socket = VelNet::CreateSocketXt(VelNet::Socket::SOCKET_DATAGRAM,
                                                    VelNet::Socket::PROTOCOL_UDP, family_);
        socket->Bind(VelNet::SPECIAL_ANY, port);
        collection_->Add(socket.Get(), VelNet::EVENT_READ);
        return socket;
    }

    void Pass(VelNet::Socket& ready) {
        if (ready.IsSameSocket(*listener_)) return PassQuestion();
        for (const auto& [name, client] : clients_)
            if (ready.IsSameSocket(*client.socket)) return PassAnswer(client);
    }

    void PassQuestion() {
        const Datagram question = Receive(*listener_);
        Send(*ClientOf(question).socket, question.bytes, host_, serverPort_);
        ++questions_;
    }

    void PassAnswer(const Client& client) {
        Send(*listener_, Receive(*client.socket).bytes, client.host, client.port);
        ++answers_;
    }

    const Client& ClientOf(const Datagram& question) {
        Client& client = clients_[question.host + " " + question.port];
        if (client.socket) return client;
        if (clients_.size() > MostClients) throw std::runtime_error("too many clients");
        client = {question.host, question.port, NewSocket("0")};
        return client;
    }

    static Datagram Receive(VelNet::SocketXt& socket) {
        char block[65536];
        VelBase::ReturnString host;
        VelBase::ReturnString port;
        const int length = socket.RecvFrom(block, sizeof block, host, port);
        return {{block, static_cast<std::size_t>(length)}, host.c_str(), port.c_str()};
    }

    static void Send(VelNet::SocketXt& socket, const std::string& bytes, const std::string& host,
                     const std::string& port) {
        const int length = static_cast<int>(bytes.size());
        if (socket.SendTo(bytes.data(), length, host.c_str(), port.c_str()) != length)
            throw std::runtime_error("a datagram was cut");
    }

    VelNet::SocketXt::ADDR_FAMILY family_;
    std::string host_;
    std::string serverPort_;
    VelCompanion::CollectionOwner collection_;
    SocketOwner listener_;
    std::map<std::string, Client> clients_;
    unsigned long long questions_ = 0;
    unsigned long long answers_ = 0;
};

}  // namespace

int main(int count, char** words) try {
    if (count != 5) {
        std::fputs("usage: peer_datagram_relay ipv4|ipv6 PORT HOST SERVER_PORT\n", stderr);
        return 2;
    }
    const VelNet::SocketInitialization socketLayer;
    Relay relay(words[1], words[2], words[3], words[4]);
    std::atomic<bool> isEnough = false;
    std::jthread waiting([&] {
        Peers::AwaitLineOfInput();
        isEnough = true;
    });
    relay.Serve(isEnough);
    relay.Tell();
} catch (...) {
    // The thread that reads the standard input cannot be ended.
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    std::_Exit(1);
}

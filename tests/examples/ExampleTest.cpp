#include <VelNet/Exception.h>
#include <VelNet/SocketCollection.h>
#include <examples/ExampleTest.h>
#include <support/RawPeer.h>

#include <chrono>
#include <stdexcept>
#include <thread>

namespace Examples {

namespace {

using VelNet::Socket;

constexpr unsigned int PatienceInSeconds = 60;

struct DestroyCollection {
    void operator()(VelNet::SocketCollection* collection) const { collection->Destroy(); }
};
using CollectionPtr = std::unique_ptr<VelNet::SocketCollection, DestroyCollection>;

SocketPtr Stream() {
    SocketPtr socket = VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
    socket->SetReceiveTimeout(PatienceInSeconds * 1000);
    socket->SetSendTimeout(PatienceInSeconds * 1000);
    return socket;
}

std::string FreePort(Socket::SOCKET_TYPE type) {
    const auto protocol =
        type == Socket::SOCKET_STREAM ? Socket::PROTOCOL_TCP : Socket::PROTOCOL_UDP;
    const SocketPtr socket = VelNet::CreateSocket(type, protocol);
    socket->Bind(VelNet::Octets(127, 0, 0, 1), 0);
    return PortOf(*socket);
}

// Repeats a call of a non-blocking socket until it has an outcome.
template <class Call>
auto Eventually(Call call) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(PatienceInSeconds);
    for (;;) {
        try {
            return call();
        } catch (const VelNet::Exception& failure) {
            if (failure.GetErrorCode() != VelNet::SOCKET_ERR_WOULDBLOCK) throw;
        }
        if (std::chrono::steady_clock::now() > end) throw std::runtime_error("nothing comes");
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

}  // namespace

Server::Server(const std::string& name, Socket::SOCKET_TYPE type,
               const std::vector<std::string>& words, const std::string& announcement) {
    constexpr int mostAttempts = 20;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        port_ = FreePort(type);
        std::vector<std::string> all = words;
        all.insert(all.begin(), port_);
        program_ = std::make_unique<Program>(name, all);
        if (program_->ReadLine() == announcement) return;
    }
    throw std::runtime_error(name + " never listened");
}

std::string LoopbackHost() {
    const auto socket = VelNet::CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
    return socket->GetSpecialAddress(VelNet::SPECIAL_LOOPBACK, socket->GetAddressFamily()).c_str();
}

std::string PortIn(const std::string& announcement) {
    return announcement.substr(announcement.rfind(' ') + 1);
}

SocketPtr Listening() {
    SocketPtr listener = Stream();
    listener->Bind(VelNet::Octets(127, 0, 0, 1), 0);
    listener->Listen();
    return listener;
}

SocketPtr ConnectedTo(const std::string& port) {
    SocketPtr socket = Stream();
    socket->Connect(VelNet::Octets(127, 0, 0, 1), static_cast<unsigned short>(std::stoi(port)));
    return socket;
}

SocketPtr AcceptedFrom(Socket& listener) {
    const CollectionPtr waiting(VelNet::CreateSocketCollection());
    waiting->Add(&listener, VelNet::EVENT_ACCEPT);
    if (!CollectionPtr(waiting->Select(PatienceInSeconds)))
        throw std::runtime_error("nobody connects");
    VelNet::SocketAddress address;
    return listener.Accept(address);
}

std::string PortOf(const Socket& socket) {
    return std::to_string(socket.GetLocalAddress().GetPort());
}

void SendAll(Socket& socket, const std::string& text) {
    for (std::size_t sent = 0; sent < text.size();)
        sent += static_cast<std::size_t>(
            socket.Send(text.data() + sent, static_cast<int>(text.size() - sent)));
}

std::string ReceiveExactly(Socket& socket, std::size_t count) {
    std::string received(count, '\0');
    for (std::size_t done = 0; done < count;)
        done += static_cast<std::size_t>(
            socket.Receive(received.data() + done, static_cast<int>(count - done)));
    return received;
}

int CodeOfReceive(Socket& socket) try {
    char block[64];
    return -1000 - socket.Receive(block, sizeof block);
} catch (const VelNet::Exception& failure) {
    return failure.GetErrorCode();
}

FakeServer::FakeServer()
    : listener_(VelNet::CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP)) {
    listener_->Bind(VelNet::SPECIAL_LOOPBACK, "0");
    listener_->Listen();
    listener_->SetNonBlocking();
}

std::string FakeServer::Port() const {
    return std::to_string(Support::LocalPortOf(listener_->GetHandle()));
}

std::string FakeServer::Serve(const std::string& requestEnd, const std::string& answer) {
    VelBase::ReturnPtrI<VelNet::SocketXt> client;
    VelBase::ReturnString host;
    VelBase::ReturnString port;
    Eventually([&] { return listener_->Accept(client, host, port).Get(); });
    std::string request;
    while (request.find(requestEnd) == std::string::npos) {
        char block[4096];
        const int length = Eventually([&] { return client->Receive(block, sizeof block); });
        request.append(block, static_cast<std::size_t>(length));
    }
    SendAll(*client, answer);
    client->Close();
    return request;
}

}  // namespace Examples

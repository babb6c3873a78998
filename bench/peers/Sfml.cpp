// SFML's sockets. It tells failures by return values, so it has no row for what is thrown.

#include <SFML/Network.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>

#include "Peers.h"
#include "harness/Memory.h"
#include "harness/Transfers.h"
#include "rows/Scenes.h"

namespace Bench {
namespace {

void Require(sf::Socket::Status status) {
    if (status != sf::Socket::Done) throw std::runtime_error("SFML refused");
}

const sf::IpAddress& LocalHost() {
    static const sf::IpAddress address(127, 0, 0, 1);
    return address;
}

class SfmlPair {
public:
    struct End {
        sf::TcpSocket* socket;

        int Send(const char* data, int size) const {
            std::size_t sent = 0;
            Require(socket->send(data, static_cast<std::size_t>(size), sent));
            return static_cast<int>(sent);
        }
        int Receive(char* data, int size) const {
            std::size_t received = 0;
            Require(socket->receive(data, static_cast<std::size_t>(size), received));
            return static_cast<int>(received);
        }
    };

    SfmlPair() {
        sf::TcpListener listener;
        Require(listener.listen(sf::Socket::AnyPort, LocalHost()));
        Require(client_.connect(LocalHost(), listener.getLocalPort()));
        Require(listener.accept(server_));
    }

    End Client() noexcept { return {&client_}; }
    End Server() noexcept { return {&server_}; }
    sf::TcpSocket& ServerSocket() noexcept { return server_; }

private:
    sf::TcpSocket client_;
    sf::TcpSocket server_;
};

// Binds datagram sockets only: its streams are bound where they listen or connect.
class SfmlLife : public LifeScene {
public:
    int Do() const {
        sf::UdpSocket socket;
        Require(socket.bind(sf::Socket::AnyPort, LocalHost()));
        socket.unbind();
        return 1;
    }
};

class SfmlConnection : public ConnectionScene {
public:
    SfmlConnection() { Require(listener_.listen(sf::Socket::AnyPort, LocalHost())); }

    int Do() {
        sf::TcpSocket client;
        Require(client.connect(LocalHost(), listener_.getLocalPort()));
        sf::TcpSocket server;
        Require(listener_.accept(server));
        server.disconnect();
        client.disconnect();
        return 1;
    }

private:
    sf::TcpListener listener_;
};

class SfmlDatagrams : public DatagramScene {
public:
    SfmlDatagrams() {
        Require(sender_.bind(sf::Socket::AnyPort, LocalHost()));
        Require(receiver_.bind(sf::Socket::AnyPort, LocalHost()));
        port_ = std::to_string(receiver_.getLocalPort());
    }

    int Do() {
        const auto port = static_cast<unsigned short>(std::stoi(port_));
        Require(sender_.send(block_.data(), BlockSize, sf::IpAddress("127.0.0.1"), port));
        sf::IpAddress from;
        unsigned short fromPort = 0;
        std::size_t received = 0;
        Require(receiver_.receive(block_.data(), BlockSize, received, from, fromPort));
        const std::string host = from.toString();
        const std::string portText = std::to_string(fromPort);
        return host.empty() || portText.empty() ? 0 : BlockSize + static_cast<int>(received);
    }

private:
    sf::UdpSocket sender_;
    sf::UdpSocket receiver_;
    std::string port_;
};

template <int ReadySockets>
class SfmlSelection : public SelectionScene<ReadySockets> {
public:
    SfmlSelection() {
        for (SfmlPair& pair : pairs_)
            watched_.add(pair.ServerSocket());
        for (std::size_t index = 0; index < ReadySockets; ++index)
            pairs_[index].Client().Send("x", 1);
    }

    // No time at all would stand for no limit.
    int Do() {
        if (!watched_.wait(sf::microseconds(1))) return 0;
        return static_cast<int>(std::count_if(pairs_.begin(), pairs_.end(), [this](SfmlPair& pair) {
            return watched_.isReady(pair.ServerSocket());
        }));
    }

private:
    std::array<SfmlPair, WatchedSockets> pairs_;
    sf::SocketSelector watched_;
};

}  // namespace

void AddSfmlCases(Cases& cases) {
    const char* const sfml = "SFML";
    cases.push_back(CaseOf<SendScene<SfmlPair>>("send", sfml));
    cases.push_back(CaseOf<ReceiveScene<SfmlPair>>("receive", sfml));
    cases.push_back(CaseOf<SfmlLife>("life", sfml));
    cases.push_back(CaseOf<SfmlConnection>("connection", sfml));
    cases.push_back(CaseOf<SfmlDatagrams>("datagram", sfml));
    cases.push_back(CaseOf<SfmlSelection<1>>("select-1-of-64", sfml));
    cases.push_back(CaseOf<SfmlSelection<WatchedSockets>>("select-64-of-64", sfml));
}

void PrintSfmlMemory() {
    PrintMemoryOf("SFML", [] {
        auto listener = std::make_unique<sf::TcpListener>();
        Require(listener->listen(sf::Socket::AnyPort, LocalHost()));
        return listener;
    });
}

}  // namespace Bench

// POCO's sockets.

#include <Poco/Exception.h>
#include <Poco/Net/DatagramSocket.h>
#include <Poco/Net/ServerSocket.h>
#include <Poco/Net/StreamSocket.h>
#include <Poco/Timespan.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>

#include "Peers.h"
#include "harness/Memory.h"
#include "harness/Transfers.h"
#include "rows/Scenes.h"

namespace Bench {
namespace {

using Poco::Net::SocketAddress;

const SocketAddress& AnyPort() {
    static const SocketAddress any("127.0.0.1", Poco::UInt16{0});
    return any;
}

class PocoPair {
public:
    struct End {
        Poco::Net::StreamSocket* socket;

        int Send(const char* data, int size) const { return socket->sendBytes(data, size); }
        int Receive(char* data, int size) const { return socket->receiveBytes(data, size); }
    };

    PocoPair() {
        Poco::Net::ServerSocket listener(AnyPort());
        client_.connect(listener.address());
        server_ = listener.acceptConnection();
    }

    End Client() noexcept { return {&client_}; }
    End Server() noexcept { return {&server_}; }
    Poco::Net::StreamSocket& ServerSocket() noexcept { return server_; }

private:
    Poco::Net::StreamSocket client_;
    Poco::Net::StreamSocket server_;
};

class PocoLife : public LifeScene {
public:
    int Do() const {
        Poco::Net::ServerSocket socket;
        socket.bind(AnyPort());
        socket.close();
        return 1;
    }
};

class PocoConnection : public ConnectionScene {
public:
    int Do() {
        Poco::Net::StreamSocket client(where_);
        Poco::Net::StreamSocket server = listener_.acceptConnection();
        server.close();
        client.close();
        return 1;
    }

private:
    Poco::Net::ServerSocket listener_{AnyPort()};
    SocketAddress where_ = listener_.address();
};

class PocoDatagrams : public DatagramScene {
public:
    int Do() {
        const SocketAddress where("127.0.0.1", port_);
        const int sent = sender_.sendTo(block_.data(), BlockSize, where);
        SocketAddress from;
        const int received = receiver_.receiveFrom(block_.data(), BlockSize, from);
        const std::string host = from.host().toString();
        const std::string port = std::to_string(from.port());
        return host.empty() || port.empty() ? 0 : sent + received;
    }

private:
    Poco::Net::DatagramSocket sender_{AnyPort()};
    Poco::Net::DatagramSocket receiver_{AnyPort()};
    std::string port_ = std::to_string(receiver_.address().port());
};

template <int ReadySockets>
class PocoSelection : public SelectionScene<ReadySockets> {
public:
    PocoSelection() {
        for (PocoPair& pair : pairs_)
            watched_.push_back(pair.ServerSocket());
        for (std::size_t index = 0; index < ReadySockets; ++index)
            pairs_[index].Client().Send("x", 1);
    }

    // The lists are those of the ready ones afterwards.
    int Do() const {
        Poco::Net::Socket::SocketList readable = watched_;
        Poco::Net::Socket::SocketList writable;
        Poco::Net::Socket::SocketList failed;
        return Poco::Net::Socket::select(readable, writable, failed, Poco::Timespan(0));
    }

private:
    std::array<PocoPair, WatchedSockets> pairs_;
    Poco::Net::Socket::SocketList watched_;
};

// What would block does not throw here; receiving without a connection does.
class PocoFailure : public FailureScene {
public:
    int Do() {
        try {
            return socket_.receiveBytes(block_.data(), BlockSize);
        } catch (const Poco::Exception&) {
            return 1;
        }
    }

private:
    Poco::Net::StreamSocket socket_{SocketAddress::IPv4};
};

}  // namespace

void AddPocoCases(Cases& cases) {
    const char* const poco = "POCO";
    cases.push_back(CaseOf<SendScene<PocoPair>>("send", poco));
    cases.push_back(CaseOf<ReceiveScene<PocoPair>>("receive", poco));
    cases.push_back(CaseOf<PocoLife>("life", poco));
    cases.push_back(CaseOf<PocoConnection>("connection", poco));
    cases.push_back(CaseOf<PocoDatagrams>("datagram", poco));
    cases.push_back(CaseOf<PocoSelection<1>>("select-1-of-64", poco));
    cases.push_back(CaseOf<PocoSelection<WatchedSockets>>("select-64-of-64", poco));
    cases.push_back(CaseOf<PocoFailure>("failure", poco));
}

void PrintPocoMemory() {
    PrintMemoryOf("POCO",
                  [] { return std::make_unique<Poco::Net::StreamSocket>(SocketAddress::IPv4); });
}

}  // namespace Bench

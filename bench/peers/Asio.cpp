// Asio, with its blocking operations; its reactor where several sockets are waited on.

#include <asio.hpp>

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "Peers.h"
#include "harness/Memory.h"
#include "harness/RawSockets.h"
#include "harness/Transfers.h"
#include "rows/Scenes.h"

namespace Bench {
namespace {

using asio::ip::tcp;
using asio::ip::udp;

asio::io_context& Context() {
    static asio::io_context context;
    return context;
}

template <class Protocol>
typename Protocol::endpoint AnyPort() {
    return {asio::ip::address_v4::loopback(), 0};
}

class AsioPair {
public:
    struct End {
        tcp::socket* socket;

        int Send(const char* data, int size) const {
            const auto bytes = static_cast<std::size_t>(size);
            return static_cast<int>(socket->send(asio::buffer(data, bytes)));
        }
        int Receive(char* data, int size) const {
            const auto bytes = static_cast<std::size_t>(size);
            return static_cast<int>(socket->receive(asio::buffer(data, bytes)));
        }
    };

    AsioPair() {
        tcp::acceptor listener(Context(), AnyPort<tcp>());
        client_.connect(listener.local_endpoint());
        listener.accept(server_);
    }

    End Client() noexcept { return {&client_}; }
    End Server() noexcept { return {&server_}; }
    tcp::socket& ServerSocket() noexcept { return server_; }

private:
    tcp::socket client_{Context()};
    tcp::socket server_{Context()};
};

class AsioLife : public LifeScene {
public:
    int Do() const {
        tcp::socket socket(Context());
        socket.open(tcp::v4());
        socket.bind(AnyPort<tcp>());
        socket.close();
        return 1;
    }
};

class AsioConnection : public ConnectionScene {
public:
    int Do() {
        tcp::socket client(Context());
        client.connect(where_);
        tcp::socket server = listener_.accept();
        server.close();
        client.close();
        return 1;
    }

private:
    tcp::acceptor listener_{Context(), AnyPort<tcp>()};
    tcp::endpoint where_ = listener_.local_endpoint();
};

class AsioDatagrams : public DatagramScene {
public:
    int Do() {
        const auto found = resolver_.resolve(udp::v4(), "127.0.0.1", port_);
        const std::size_t sent = sender_.send_to(asio::buffer(block_), found.begin()->endpoint());
        udp::endpoint from;
        const std::size_t received = receiver_.receive_from(asio::buffer(block_), from);
        const std::string host = from.address().to_string();
        const std::string port = std::to_string(from.port());
        return host.empty() || port.empty() ? 0 : static_cast<int>(sent + received);
    }

private:
    udp::resolver resolver_{Context()};
    udp::socket sender_{Context(), AnyPort<udp>()};
    udp::socket receiver_{Context(), AnyPort<udp>()};
    std::string port_ = std::to_string(receiver_.local_endpoint().port());
};

template <int ReadySockets>
class AsioSelection : public SelectionScene<ReadySockets> {
public:
    AsioSelection() {
        for (AsioPair& pair : pairs_)
            Wait(pair.ServerSocket());
        for (std::size_t index = 0; index < ReadySockets; ++index)
            pairs_[index].Client().Send("x", 1);
    }
    ~AsioSelection() {
        for (AsioPair& pair : pairs_)
            pair.ServerSocket().cancel();
        Poll();
    }
    AsioSelection(const AsioSelection&) = delete;
    AsioSelection& operator=(const AsioSelection&) = delete;

    // Each wait ends when its socket is ready, and is begun anew.
    int Do() {
        ready_.clear();
        Poll();
        for (tcp::socket* const socket : ready_)
            Wait(*socket);
        return static_cast<int>(ready_.size());
    }

private:
    static void Poll() {
        Context().restart();
        Context().poll();
    }
    void Wait(tcp::socket& socket) {
        socket.async_wait(tcp::socket::wait_read, [this, &socket](const std::error_code& error) {
            if (!error) ready_.push_back(&socket);
        });
    }

    std::array<AsioPair, WatchedSockets> pairs_;
    std::vector<tcp::socket*> ready_;
};

class AsioFailure : public FailureScene {
public:
    AsioFailure() { pair_.ServerSocket().non_blocking(true); }

    int Do() {
        try {
            return pair_.Server().Receive(block_.data(), BlockSize);
        } catch (const std::system_error& failure) {
            return failure.code() == asio::error::would_block ? 1 : 0;
        }
    }

private:
    AsioPair pair_;
};

}  // namespace

void AddAsioCases(Cases& cases) {
    const char* const asio = "Asio";
    cases.push_back(CaseOf<SendScene<AsioPair>>("send", asio));
    cases.push_back(CaseOf<ReceiveScene<AsioPair>>("receive", asio));
    cases.push_back(CaseOf<AsioLife>("life", asio));
    cases.push_back(CaseOf<AsioConnection>("connection", asio));
    cases.push_back(CaseOf<AsioDatagrams>("datagram", asio));
    cases.push_back(CaseOf<AsioSelection<1>>("select-1-of-64", asio));
    cases.push_back(CaseOf<AsioSelection<WatchedSockets>>("select-64-of-64", asio));
    cases.push_back(CaseOf<AsioFailure>("failure", asio));
}

void PrintAsioMemory() {
    PrintMemoryOf("Asio", [] {
        auto socket = std::make_unique<tcp::socket>(Context());
        socket->open(tcp::v4());
        return socket;
    });
}

}  // namespace Bench

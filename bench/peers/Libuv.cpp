// libuv, whose loop runs until what was asked for has come. It tells failures by return values, so
// it has no row for what is thrown.

#include <uv.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include "Peers.h"
#include "harness/Memory.h"
#include "harness/RawSockets.h"
#include "harness/Transfers.h"
#include "rows/Scenes.h"

namespace Bench {
namespace {

void Require(int result) {
    if (result < 0) throw std::runtime_error(::uv_strerror(result));
}

// One for the process: its handles live as long as they are not closed.
uv_loop_t* Loop() {
    return ::uv_default_loop();
}

void RunOnce() {
    ::uv_run(Loop(), UV_RUN_ONCE);
}

template <class Handle>
uv_handle_t* HandleIn(Handle& handle) noexcept {
    void* const place = &handle;
    return static_cast<uv_handle_t*>(place);
}

uv_stream_t* StreamIn(uv_tcp_t& handle) noexcept {
    void* const place = &handle;
    return static_cast<uv_stream_t*>(place);
}

sockaddr_in Where(const char* host, int port) {
    sockaddr_in address{};
    Require(::uv_ip4_addr(host, port, &address));
    return address;
}

const sockaddr* AddressIn(const sockaddr_in& address) noexcept {
    const void* const place = &address;
    return static_cast<const sockaddr*>(place);
}

// A handle that closes with its owner.
template <class Handle>
class Closing {
public:
    Closing() = default;
    ~Closing() {
        handle_.data = this;
        ::uv_close(HandleIn(handle_), [](uv_handle_t* handle) {
            static_cast<Closing*>(handle->data)->isClosed_ = true;
        });
        while (!isClosed_)
            RunOnce();
    }
    Closing(const Closing&) = delete;
    Closing& operator=(const Closing&) = delete;

    Handle& operator*() noexcept { return handle_; }

private:
    Handle handle_{};
    bool isClosed_ = false;
};

class Tcp {
public:
    Tcp() { Require(::uv_tcp_init(Loop(), &*handle_)); }

    uv_tcp_t& operator*() noexcept { return *handle_; }

private:
    Closing<uv_tcp_t> handle_;
};

class Listener {
public:
    Listener() {
        const sockaddr_in any = Where("127.0.0.1", 0);
        Require(::uv_tcp_bind(&*listener_, AddressIn(any), 0));
        Require(::uv_listen(StreamIn(*listener_), 1, [](uv_stream_t*, int) {}));
        int size = sizeof where_;
        void* const place = &where_;
        Require(::uv_tcp_getsockname(&*listener_, static_cast<sockaddr*>(place), &size));
    }

    // The two are connected to each other afterwards.
    void Connect(Tcp& client, Tcp& server) {
        bool isConnected = false;
        uv_connect_t request{};
        request.data = &isConnected;
        Require(::uv_tcp_connect(
            &request, &*client, AddressIn(where_),
            [](uv_connect_t* done, int) { *static_cast<bool*>(done->data) = true; }));
        while (!isConnected || ::uv_accept(StreamIn(*listener_), StreamIn(*server)) != 0)
            RunOnce();
    }

private:
    Tcp listener_;
    sockaddr_in where_{};
};

class LibuvPair {
public:
    LibuvPair() {
        Listener listener;
        listener.Connect(client_, server_);
        (*server_).data = this;
        Require(::uv_read_start(StreamIn(*server_), GiveRoom, TakeBytes));
    }

    struct ClientEnd {
        uv_stream_t* stream;

        int Send(const char* data, int size) const {
            uv_buf_t bytes = ::uv_buf_init(const_cast<char*>(data), static_cast<unsigned>(size));
            return ::uv_try_write(stream, &bytes, 1);
        }
    };
    // Bytes are handed over by the loop, a block at a time.
    struct ServerEnd {
        LibuvPair* pair;

        int Receive(char*, int size) const {
            while (pair->waitingBytes_ < size)
                RunOnce();
            pair->waitingBytes_ -= size;
            return size;
        }
    };

    ClientEnd Client() noexcept { return {StreamIn(*client_)}; }
    ServerEnd Server() noexcept { return {this}; }

private:
    static void GiveRoom(uv_handle_t* handle, std::size_t, uv_buf_t* room) {
        Block& block = static_cast<LibuvPair*>(handle->data)->block_;
        *room = ::uv_buf_init(block.data(), BlockSize);
    }
    static void TakeBytes(uv_stream_t* stream, ssize_t bytes, const uv_buf_t*) {
        if (bytes > 0) static_cast<LibuvPair*>(stream->data)->waitingBytes_ += bytes;
    }

    Block block_{};
    ssize_t waitingBytes_ = 0;
    Tcp client_;
    Tcp server_;
};

class LibuvLife : public LifeScene {
public:
    int Do() const {
        Tcp socket;
        return ::uv_tcp_bind(&*socket, AddressIn(any_), 0) + 1;
    }

private:
    sockaddr_in any_ = Where("127.0.0.1", 0);
};

class LibuvConnection : public ConnectionScene {
public:
    int Do() {
        Tcp client;
        Tcp server;
        listener_.Connect(client, server);
        return 1;
    }

private:
    Listener listener_;
};

class LibuvDatagrams : public DatagramScene {
public:
    LibuvDatagrams() {
        Require(::uv_udp_init(Loop(), &*sender_));
        Require(::uv_udp_init(Loop(), &*receiver_));
        const sockaddr_in any = Where("127.0.0.1", 0);
        Require(::uv_udp_bind(&*sender_, AddressIn(any), 0));
        Require(::uv_udp_bind(&*receiver_, AddressIn(any), 0));
        sockaddr_in where{};
        int size = sizeof where;
        void* const place = &where;
        Require(::uv_udp_getsockname(&*receiver_, static_cast<sockaddr*>(place), &size));
        port_ = std::to_string(ntohs(where.sin_port));
        (*receiver_).data = this;
        Require(::uv_udp_recv_start(&*receiver_, GiveRoom, TakeDatagram));
    }

    int Do() {
        const sockaddr_in where = Where("127.0.0.1", std::stoi(port_));
        const uv_buf_t bytes = ::uv_buf_init(block_.data(), BlockSize);
        const int sent = ::uv_udp_try_send(&*sender_, &bytes, 1, AddressIn(where));
        received_ = 0;
        while (received_ == 0)
            RunOnce();
        return sent + received_;
    }

private:
    static void GiveRoom(uv_handle_t* handle, std::size_t, uv_buf_t* room) {
        *room = ::uv_buf_init(static_cast<LibuvDatagrams*>(handle->data)->room_.data(), BlockSize);
    }
    static void TakeDatagram(uv_udp_t* socket, ssize_t bytes, const uv_buf_t*, const sockaddr* from,
                             unsigned) {
        if (from == nullptr) return;
        sockaddr_in sender{};
        std::memcpy(&sender, from, sizeof sender);
        char host[INET_ADDRSTRLEN];
        Require(::uv_ip4_name(&sender, host, sizeof host));
        const std::string port = std::to_string(ntohs(sender.sin_port));
        static_cast<LibuvDatagrams*>(socket->data)->received_ = static_cast<int>(bytes);
    }

    Block room_{};
    int received_ = 0;
    std::string port_;
    Closing<uv_udp_t> sender_;
    Closing<uv_udp_t> receiver_;
};

template <int ReadySockets>
class LibuvSelection : public SelectionScene<ReadySockets> {
public:
    LibuvSelection() {
        for (std::size_t index = 0; index < watches_.size(); ++index)
            Watch(*watches_[index], pairs_[index].Server());
        for (std::size_t index = 0; index < ReadySockets; ++index)
            Checked(::send(pairs_[index].Client(), "x", 1, MSG_NOSIGNAL), "send");
    }

    int Do() {
        ready_ = 0;
        ::uv_run(Loop(), UV_RUN_NOWAIT);
        return ready_;
    }
    // The loop is everybody's: what others do with it must not find these sockets.
    void Prepare() {
        for (auto& watch : watches_)
            Require(::uv_poll_start(&*watch, UV_READABLE, [](uv_poll_t* handle, int, int) {
                ++static_cast<LibuvSelection*>(handle->data)->ready_;
            }));
    }
    void Restore() {
        for (auto& watch : watches_)
            ::uv_poll_stop(&*watch);
    }

private:
    void Watch(uv_poll_t& handle, int descriptor) {
        Require(::uv_poll_init_socket(Loop(), &handle, descriptor));
        handle.data = this;
    }

    int ready_ = 0;
    std::array<RawPair, WatchedSockets> pairs_;
    std::array<Closing<uv_poll_t>, WatchedSockets> watches_;
};

}  // namespace

void AddLibuvCases(Cases& cases) {
    const char* const libuv = "libuv";
    cases.push_back(CaseOf<SendScene<LibuvPair>>("send", libuv));
    cases.push_back(CaseOf<ReceiveScene<LibuvPair>>("receive", libuv));
    cases.push_back(CaseOf<LibuvLife>("life", libuv));
    cases.push_back(CaseOf<LibuvConnection>("connection", libuv));
    cases.push_back(CaseOf<LibuvDatagrams>("datagram", libuv));
    cases.push_back(CaseOf<LibuvSelection<1>>("select-1-of-64", libuv));
    cases.push_back(CaseOf<LibuvSelection<WatchedSockets>>("select-64-of-64", libuv));
}

void PrintLibuvMemory() {
    PrintMemoryOf("libuv", [] { return std::make_unique<Tcp>(); });
}

}  // namespace Bench

// ACE's sockets. It tells failures by return values, so it has no row for what is thrown.

#include <ace/Handle_Set.h>
#include <ace/INET_Addr.h>
#include <ace/OS_NS_sys_select.h>
#include <ace/SOCK_Acceptor.h>
#include <ace/SOCK_Connector.h>
#include <ace/SOCK_Dgram.h>
#include <ace/SOCK_Stream.h>
#include <ace/Time_Value.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>

#include "Peers.h"
#include "harness/Transfers.h"
#include "rows/Scenes.h"

namespace Bench {
namespace {

void Require(int result) {
    if (result == -1) throw std::runtime_error("ACE refused");
}

ACE_INET_Addr AnyPort() {
    return {u_short{0}, "127.0.0.1"};
}

class Listener {
public:
    Listener() {
        Require(acceptor_.open(AnyPort()));
        Require(acceptor_.get_local_addr(where_));
    }
    ~Listener() { acceptor_.close(); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    const ACE_INET_Addr& Where() const noexcept { return where_; }
    void AcceptInto(ACE_SOCK_Stream& stream) const { Require(acceptor_.accept(stream)); }

private:
    ACE_SOCK_Acceptor acceptor_;
    ACE_INET_Addr where_;
};

void Connect(ACE_SOCK_Stream& stream, const ACE_INET_Addr& where) {
    ACE_SOCK_Connector connector;
    Require(connector.connect(stream, where));
}

class AcePair {
public:
    struct End {
        const ACE_SOCK_Stream* stream;

        int Send(const char* data, int size) const {
            return static_cast<int>(stream->send(data, static_cast<std::size_t>(size)));
        }
        int Receive(char* data, int size) const {
            return static_cast<int>(stream->recv(data, static_cast<std::size_t>(size)));
        }
    };

    AcePair() {
        const Listener listener;
        Connect(client_, listener.Where());
        listener.AcceptInto(server_);
    }
    ~AcePair() {
        client_.close();
        server_.close();
    }
    AcePair(const AcePair&) = delete;
    AcePair& operator=(const AcePair&) = delete;

    End Client() const noexcept { return {&client_}; }
    End Server() const noexcept { return {&server_}; }
    ACE_HANDLE ServerHandle() const { return server_.get_handle(); }

private:
    ACE_SOCK_Stream client_;
    ACE_SOCK_Stream server_;
};

// Binds datagram sockets only: its streams are bound where they listen or connect.
class AceLife : public LifeScene {
public:
    int Do() const {
        ACE_SOCK_Dgram socket;
        return socket.open(any_) + socket.close() + 1;
    }

private:
    ACE_INET_Addr any_ = AnyPort();
};

class AceConnection : public ConnectionScene {
public:
    int Do() const {
        ACE_SOCK_Stream client;
        Connect(client, listener_.Where());
        ACE_SOCK_Stream server;
        listener_.AcceptInto(server);
        return server.close() + client.close() + 1;
    }

private:
    Listener listener_;
};

class AceDatagrams : public DatagramScene {
public:
    AceDatagrams() {
        ACE_INET_Addr where;
        Require(receiver_.get_local_addr(where));
        port_ = std::to_string(where.get_port_number());
    }
    ~AceDatagrams() {
        sender_.close();
        receiver_.close();
    }
    AceDatagrams(const AceDatagrams&) = delete;
    AceDatagrams& operator=(const AceDatagrams&) = delete;

    int Do() {
        const ACE_INET_Addr where(port_.c_str(), "127.0.0.1");
        const auto sent = sender_.send(block_.data(), BlockSize, where);
        ACE_INET_Addr from;
        const auto received = receiver_.recv(block_.data(), BlockSize, from);
        char host[INET6_ADDRSTRLEN];
        from.get_host_addr(host, sizeof host);
        const std::string port = std::to_string(from.get_port_number());
        return port.empty() ? 0 : static_cast<int>(sent + received);
    }

private:
    ACE_SOCK_Dgram sender_{AnyPort()};
    ACE_SOCK_Dgram receiver_{AnyPort()};
    std::string port_;
};

template <int ReadySockets>
class AceSelection : public SelectionScene<ReadySockets> {
public:
    AceSelection() {
        for (const AcePair& pair : pairs_) {
            watched_.set_bit(pair.ServerHandle());
            highest_ = std::max(highest_, pair.ServerHandle());
        }
        for (std::size_t index = 0; index < ReadySockets; ++index)
            pairs_[index].Client().Send("x", 1);
    }

    int Do() const {
        ACE_Handle_Set ready = watched_;
        const ACE_Time_Value noTime(0);
        return ACE_OS::select(highest_ + 1, ready, nullptr, nullptr, noTime);
    }

private:
    std::array<AcePair, WatchedSockets> pairs_;
    ACE_Handle_Set watched_;
    ACE_HANDLE highest_ = 0;
};

}  // namespace

void AddAceCases(Cases& cases) {
    const char* const ace = "ACE";
    cases.push_back(CaseOf<SendScene<AcePair>>("send", ace));
    cases.push_back(CaseOf<ReceiveScene<AcePair>>("receive", ace));
    cases.push_back(CaseOf<AceLife>("life", ace));
    cases.push_back(CaseOf<AceConnection>("connection", ace));
    cases.push_back(CaseOf<AceDatagrams>("datagram", ace));
    cases.push_back(CaseOf<AceSelection<1>>("select-1-of-64", ace));
    cases.push_back(CaseOf<AceSelection<WatchedSockets>>("select-64-of-64", ace));
}

}  // namespace Bench

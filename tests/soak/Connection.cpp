#include "Connection.h"

#include <stdexcept>

#include "Ends.h"

namespace Soak {

void Require(bool kept, const std::string& promise) {
    if (!kept) throw std::runtime_error("not so: " + promise);
}

namespace {

using namespace VelNet;

constexpr std::size_t LargestPiece = 16 * 1024;
constexpr std::size_t MostPieces = 8;
constexpr std::size_t LargestDatagram = 8 * 1024;

int CodeOfReceiving(Socket& socket) {
    char byte = 0;
    try {
        static_cast<void>(socket.Receive(&byte, 1));
    } catch (const Exception& failure) {
        return failure.GetErrorCode();
    }
    return 0;
}

void SendAll(Socket& socket, const std::string& bytes) {
    for (std::size_t sent = 0; sent < bytes.size();)
        sent += static_cast<std::size_t>(
            socket.Send(bytes.data() + sent, static_cast<int>(bytes.size() - sent)));
}

std::string ReceiveAll(Socket& socket, std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t received = 0; received < size;)
        received += static_cast<std::size_t>(
            socket.Receive(bytes.data() + received, static_cast<int>(size - received)));
    return bytes;
}

class Stream final : public Connection {
public:
    explicit Stream(Ends<Socket> ends) : ends_(std::move(ends)) {
        for (const auto& end : ends_)
            LimitWaiting(*end.Get());
    }

    // In pieces that the system takes without a reader.
    std::size_t Exchange(Random& random) override {
        const std::size_t from = Below(random, 2);
        std::size_t total = 0;
        for (std::size_t pieces = 1 + Below(random, MostPieces); pieces > 0; --pieces)
            total += Pass(from, Payload(random, 1 + Below(random, LargestPiece)));
        return total;
    }

    void WaitInSet(Random& random) override {
        const std::size_t waiting = Below(random, 2);
        SendAll(*ends_[1 - waiting].Get(), "x");
        WaitUntilReadable(*ends_[waiting].Get());
        Require(ends_[waiting]->GetStatus() == STATUS_DATA_PENDING, "waiting bytes are told");
        Require(ReceiveAll(*ends_[waiting].Get(), 1) == "x", "the set's byte arrives");
    }

    void CloseOrderly(Random& random) override {
        const std::size_t closing = Below(random, 2);
        ends_[closing]->Close();
        Require(CodeOfReceiving(*ends_[1 - closing].Get()) == SOCKET_ERR_UNKNOWN,
                "an orderly end is told");
    }

    void CloseAbruptly(Random& random) override {
        const std::size_t closing = Below(random, 2);
        SendAll(*ends_[1 - closing].Get(), Payload(random, 1 + Below(random, LargestPiece)));
        WaitUntilReadable(*ends_[closing].Get());
        ends_[closing]->Close();
        Require(CodeOfReceiving(*ends_[1 - closing].Get()) == SOCKET_ERR_CONNRESET,
                "a reset is told");
    }

private:
    std::size_t Pass(std::size_t from, const std::string& bytes) {
        SendAll(*ends_[from].Get(), bytes);
        const std::string received = ReceiveAll(*ends_[1 - from].Get(), bytes.size());
        Require(Checksum(received) == Checksum(bytes), "bytes arrive whole");
        return bytes.size();
    }

    Ends<Socket> ends_;
};

// What datagram sockets of both classes do alike.
template <class Socket>
class Datagrams : public Connection {
public:
    explicit Datagrams(Ends<Socket> ends) : ends_(std::move(ends)) {
        for (const auto& end : ends_)
            LimitWaiting(*end.Get());
    }

    std::size_t Exchange(Random& random) override {
        const std::string bytes = Payload(random, 1 + Below(random, LargestDatagram));
        const std::size_t from = Below(random, 2);
        Pass(from, bytes);
        return bytes.size();
    }

    void WaitInSet(Random& random) override {
        const std::size_t from = Below(random, 2);
        Send(from, "x");
        WaitUntilReadable(*ends_[1 - from].Get());
        Require(Receive(1 - from) == "x", "the set's datagram arrives");
    }

    void CloseOrderly(Random& random) override { ends_[Below(random, 2)]->Close(); }

    void CloseAbruptly(Random& random) override {
        const std::size_t from = Below(random, 2);
        Send(from, Payload(random, 1 + Below(random, LargestDatagram)));
        ends_[1 - from]->Close();
    }

protected:
    // Sends all bytes as one datagram.
    virtual void Send(std::size_t from, const std::string& bytes) = 0;
    virtual std::string Receive(std::size_t to) = 0;

    Ends<Socket> ends_;

private:
    void Pass(std::size_t from, const std::string& bytes) {
        Send(from, bytes);
        Require(Checksum(Receive(1 - from)) == Checksum(bytes), "a datagram arrives whole");
    }
};

class ClassicDatagrams final : public Datagrams<Socket> {
public:
    using Datagrams::Datagrams;

private:
    void Send(std::size_t from, const std::string& bytes) override {
        const auto size = static_cast<int>(bytes.size());
        Require(ends_[from]->Send(bytes.data(), size) == size, "a datagram is sent whole");
    }

    std::string Receive(std::size_t to) override {
        std::string bytes(LargestDatagram, '\0');
        const int count = ends_[to]->Receive(bytes.data(), static_cast<int>(bytes.size()));
        return bytes.substr(0, static_cast<std::size_t>(count));
    }
};

class ExtendedDatagrams final : public Datagrams<SocketXt> {
public:
    using Datagrams::Datagrams;

private:
    void Send(std::size_t from, const std::string& bytes) override {
        const auto size = static_cast<int>(bytes.size());
        const char* const host = LoopbackOf(ends_[from]->GetAddressFamily());
        const std::string port = PortOf(*ends_[1 - from].Get());
        Require(ends_[from]->SendTo(bytes.data(), size, host, port.c_str()) == size,
                "a datagram is sent whole");
    }

    std::string Receive(std::size_t to) override {
        std::string bytes(LargestDatagram, '\0');
        VelBase::ReturnString host;
        VelBase::ReturnString port;
        const int count =
            ends_[to]->RecvFrom(bytes.data(), static_cast<int>(bytes.size()), host, port);
        Require(PortOf(*ends_[1 - to].Get()) == port.c_str(), "the sender's port is told");
        return bytes.substr(0, static_cast<std::size_t>(count));
    }
};

}  // namespace

std::unique_ptr<Connection> MakeConnection(Random& random) {
    const SocketXt::ADDR_FAMILY family =
        Below(random, 2) == 0 ? SocketXt::FAMILY_IPV4 : SocketXt::FAMILY_IPV6;
    switch (Below(random, 4)) {
        case 0:
            return std::make_unique<Stream>(ConnectClassicStreams());
        case 1:
            return std::make_unique<Stream>(ConnectExtendedStreams(family));
        case 2:
            return std::make_unique<ClassicDatagrams>(ConnectClassicDatagrams());
        default:
            return std::make_unique<ExtendedDatagrams>(BindExtendedDatagrams(family));
    }
}

}  // namespace Soak

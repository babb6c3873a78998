#include <utility>

#include "Addresses.h"
#include "DatagramSocket.h"
#include "Endpoint.h"
#include "ExtendedSocket.h"
#include "Limits.h"
#include "SystemNetwork.h"
#include "Transfer.h"

namespace VelSockCat {

namespace {

using VelBase::ReturnPtrI;
using VelNet::SocketXt;

// The system reports on a socket that a datagram sent earlier from it has not arrived.
bool IsEarlierOneLost(const VelNet::Exception& exception) {
    return exception.GetErrorCode() == VelNet::SOCKET_ERR_CONNRESET;
}

class ExtendedDatagrams : public DatagramSocket {
public:
    // The host that Send sends to.
    ExtendedDatagrams(ReturnPtrI<SocketXt> socket, std::string host, const Arguments& arguments)
        : socket_(std::move(socket)), host_(std::move(host)), arguments_(arguments) {}

    void Send(std::string_view bytes) override {
        if (!addresses_) addresses_ = AddressesFor(*socket_, host_, NoDeadline());
        const std::string port = std::to_string(arguments_.port);
        const auto refusal = TryEach(*addresses_, [&](const std::string& address) {
            socket_->SendTo(bytes.data(), static_cast<int>(bytes.size()), address.c_str(),
                            port.c_str());
        });
        if (!refusal) return;
        throw TransferFailure("cannot send to " + EndpointText(host_, arguments_.port),
                              refusal->last, ReasonFor(*socket_, refusal->last, arguments_))
            .With(refusal->attempts);
    }

    void Answer(const Datagram& datagram, std::string_view bytes) override {
        try {
            socket_->SendTo(bytes.data(), static_cast<int>(bytes.size()),
                            datagram.senderHost.c_str(), datagram.senderPort.c_str());
        } catch (const VelNet::Exception& exception) {
            if (IsEarlierOneLost(exception)) return;
            throw TransferFailure("cannot send to " + datagram.senderHost, exception);
        }
    }

    Datagram Receive(char* buffer) override {
        try {
            VelBase::ReturnString host;
            VelBase::ReturnString port;
            const int count = socket_->RecvFrom(buffer, Room, host, port);
            return {{buffer, static_cast<std::size_t>(count)}, host.c_str(), port.c_str()};
        } catch (const VelNet::Exception& exception) {
            if (answers_ && IsEarlierOneLost(exception)) return Receive(buffer);
            throw TransferFailure("cannot receive", exception);
        }
    }

private:
    ReturnPtrI<SocketXt> socket_;
    std::string host_;
    std::optional<Addresses> addresses_;  // from the first datagram on
    const Arguments& arguments_;
    const bool answers_ = arguments_.usesDatagrams;  // serves others
};

// Several programs on one host may receive from a group on the same port.
void JoinGroup(SocketXt& socket, const Arguments& arguments) {
    try {
        socket.SetReuseAddress();
        socket.Bind(VelNet::SPECIAL_ANY, std::to_string(arguments.port).c_str());
        socket.SetSocketForMulticast(arguments.host->c_str(), 0);
    } catch (const VelNet::Exception& exception) {
        throw OpeningFailure("cannot join " + EndpointText(*arguments.host, arguments.port), socket,
                             {exception, {}}, arguments);
    }
}

// Prepares the socket for the command and returns the host concerned.
std::string Prepare(SocketXt& socket, const Arguments& arguments) {
    switch (arguments.command) {
        case Command::Multicast:
            JoinGroup(socket, arguments);
            return *arguments.host;
        case Command::UdpListen:
        case Command::Echo:
        case Command::Discard:
        case Command::Chargen:
        case Command::Relay:
            return BindExtended(socket, Kind::Datagram, arguments);
        case Command::Broadcast:
            socket.SetSocketForBroadcast();
            return SpecialAddressOf(socket, VelNet::SPECIAL_BROADCAST);
        default:
            return *arguments.host;
    }
}

bool IsReceiver(const Arguments& arguments) {
    return arguments.usesDatagrams || arguments.command == Command::UdpListen ||
           arguments.command == Command::Multicast;
}

}  // namespace

void DatagramSocket::Answer(const Datagram&, std::string_view) {
    throw VelSockTools::Failure(VelSockTools::ExitCode::ConnectionLost,
                                "a classic socket does not know who has sent a datagram");
}

std::unique_ptr<DatagramSocket> OpenExtendedDatagrams(const Arguments& arguments) {
    auto socket = CreateExtended(Kind::Datagram, arguments);
    std::string host = Prepare(*socket, arguments);
    SetTimeouts(*socket, arguments);
    if (IsReceiver(arguments)) AnnounceListening(host, VelSockTools::LocalPortOf(*socket));
    return std::make_unique<ExtendedDatagrams>(std::move(socket), std::move(host), arguments);
}

}  // namespace VelSockCat

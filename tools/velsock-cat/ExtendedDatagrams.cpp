#include <utility>

#include "DatagramSocket.h"
#include "Endpoint.h"
#include "ExtendedSocket.h"
#include "Transfer.h"

namespace VelSockCat {

namespace {

using VelBase::ReturnPtrI;
using VelNet::SocketXt;

class ExtendedDatagrams : public DatagramSocket {
public:
    // The host that Send sends to.
    ExtendedDatagrams(ReturnPtrI<SocketXt> socket, std::string host, const Arguments& arguments)
        : socket_(std::move(socket)),
          host_(std::move(host)),
          port_(std::to_string(arguments.port)),
          arguments_(arguments) {}

    void Send(std::string_view bytes) override {
        try {
            socket_->SendTo(bytes.data(), static_cast<int>(bytes.size()), host_.c_str(),
                            port_.c_str());
        } catch (const VelNet::Exception& exception) {
            throw TransferFailure(exception, RemarkOnVersion(*socket_, exception, arguments_));
        }
    }

    Datagram Receive(char* buffer) override {
        try {
            VelBase::ReturnString host;
            VelBase::ReturnString port;
            const int count = socket_->RecvFrom(buffer, Room, host, port);
            return {{buffer, static_cast<std::size_t>(count)}, host.c_str(), port.c_str()};
        } catch (const VelNet::Exception& exception) {
            throw TransferFailure(exception);
        }
    }

private:
    ReturnPtrI<SocketXt> socket_;
    std::string host_;
    std::string port_;
    const Arguments& arguments_;
};

// Several programs on one host may receive from a group on the same port.
void JoinGroup(SocketXt& socket, const Arguments& arguments) {
    try {
        socket.SetReuseAddress();
        socket.Bind(VelNet::SPECIAL_ANY, std::to_string(arguments.port).c_str());
        socket.SetSocketForMulticast(arguments.host->c_str(), 0);
    } catch (const VelNet::Exception& exception) {
        throw OpeningFailure(socket, exception, arguments);
    }
}

// Prepares the socket for the command and returns the host concerned.
std::string Prepare(SocketXt& socket, const Arguments& arguments) {
    if (arguments.command == Command::Multicast) JoinGroup(socket, arguments);
    if (arguments.command == Command::UdpListen) BindExtended(socket, arguments);
    if (arguments.command != Command::Broadcast) {
        return arguments.host.value_or(SpecialAddressOf(socket, VelNet::SPECIAL_LOOPBACK));
    }
    socket.SetSocketForBroadcast();
    return SpecialAddressOf(socket, VelNet::SPECIAL_BROADCAST);
}

bool IsReceiver(const Arguments& arguments) {
    return arguments.command == Command::UdpListen || arguments.command == Command::Multicast;
}

}  // namespace

std::unique_ptr<DatagramSocket> OpenExtendedDatagrams(const Arguments& arguments) {
    auto socket = CreateExtended(Kind::Datagram, arguments);
    std::string host = Prepare(*socket, arguments);
    SetTimeouts(*socket, arguments);
    if (IsReceiver(arguments)) AnnounceListening(host, arguments.port);
    return std::make_unique<ExtendedDatagrams>(std::move(socket), std::move(host), arguments);
}

}  // namespace VelSockCat

#include <VelNet/Exception.h>

#include <utility>

#include "ClassicSocket.h"
#include "DatagramSocket.h"
#include "Endpoint.h"
#include "Transfer.h"

namespace VelSockCat {

namespace {

using VelBase::ReturnPtrI;
using VelNet::Socket;

// A classic socket sends to the address that it is connected to, and does not report senders.
class ClassicDatagrams : public DatagramSocket {
public:
    explicit ClassicDatagrams(ReturnPtrI<Socket> socket) : socket_(std::move(socket)) {}

    void Send(std::string_view bytes) override {
        try {
            // A datagram is sent as a whole.
            static_cast<void>(socket_->Send(bytes.data(), static_cast<int>(bytes.size())));
        } catch (const VelNet::Exception& exception) {
            throw TransferFailure("cannot send", exception);
        }
    }

    Datagram Receive(char* buffer) override {
        try {
            const int count = socket_->Receive(buffer, Room);
            return {{buffer, static_cast<std::size_t>(count)}, "", ""};
        } catch (const VelNet::Exception& exception) {
            if (IsNothingReceived(exception)) return {};
            throw TransferFailure("cannot receive", exception);
        }
    }

private:
    ReturnPtrI<Socket> socket_;
};

ReturnPtrI<Socket> OpenReceiver(const Arguments& arguments) {
    auto socket = BindClassic(Kind::Datagram, arguments);
    AnnounceListening(*socket);
    return socket;
}

}  // namespace

std::unique_ptr<DatagramSocket> OpenClassicDatagrams(const Arguments& arguments) {
    auto socket = arguments.command == Command::UdpListen
                      ? OpenReceiver(arguments)
                      : ConnectClassic(Kind::Datagram, arguments);
    SetTimeouts(*socket, arguments);
    return std::make_unique<ClassicDatagrams>(std::move(socket));
}

}  // namespace VelSockCat

#include "Datagrams.h"

#include <cstdio>
#include <vector>

#include "DatagramSocket.h"
#include "StandardStreams.h"

namespace VelSockCat {

namespace {

std::unique_ptr<DatagramSocket> OpenDatagrams(const Arguments& arguments) {
    return arguments.Family() == SocketFamily::Classic ? OpenClassicDatagrams(arguments)
                                                       : OpenExtendedDatagrams(arguments);
}

// Counts the remaining datagrams; never ends without a number.
class Countdown {
public:
    explicit Countdown(const Arguments& arguments) : left_(arguments.datagramCount) {}

    bool Next() {
        if (!left_) return true;
        if (*left_ == 0) return false;
        --*left_;
        return true;
    }

private:
    std::optional<unsigned int> left_;
};

// No input is read for empty datagrams.
std::optional<std::string_view> NextInput(std::vector<char>& buffer) {
    if (buffer.empty()) return std::string_view();
    const std::size_t count = VelSockTools::ReadInput(buffer.data(), buffer.size());
    if (count == 0) return {};
    return std::string_view(buffer.data(), count);
}

void ShowSender(const Datagram& datagram) {
    std::fprintf(stderr, "%zu bytes from %s port %s\n", datagram.bytes.size(),
                 datagram.senderHost.c_str(), datagram.senderPort.c_str());
}

}  // namespace

void SendDatagrams(const Arguments& arguments) {
    const auto socket = OpenDatagrams(arguments);
    std::vector<char> buffer(arguments.datagramSize);
    for (Countdown countdown(arguments); countdown.Next();) {
        const auto bytes = NextInput(buffer);
        if (!bytes) return;
        socket->Send(*bytes);
    }
}

void ReceiveDatagrams(const Arguments& arguments) {
    const auto socket = OpenDatagrams(arguments);
    std::vector<char> buffer(DatagramSocket::Room);
    for (Countdown countdown(arguments); countdown.Next();) {
        const Datagram datagram = socket->Receive(buffer.data());
        if (arguments.showSenders) ShowSender(datagram);
        VelSockTools::WriteOutput(datagram.bytes);
    }
}

}  // namespace VelSockCat

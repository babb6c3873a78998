#include "Datagrams.h"

#include <cstdio>
#include <vector>

#include "DatagramSocket.h"
#include "Failure.h"
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
    explicit Countdown(const std::optional<unsigned int>& number) : left_(number) {}

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

void SendInput(DatagramSocket& socket, const Arguments& arguments) {
    std::vector<char> buffer(arguments.datagramSize);
    for (Countdown countdown(arguments.datagramCount); countdown.Next();) {
        const auto bytes = NextInput(buffer);
        if (!bytes) return;
        socket.Send(*bytes);
    }
}

void ReceiveToOutput(DatagramSocket& socket, const std::optional<unsigned int>& number,
                     bool showSenders) {
    std::vector<char> buffer(DatagramSocket::Room);
    for (Countdown countdown(number); countdown.Next();) {
        const Datagram datagram = socket.Receive(buffer.data());
        if (showSenders) ShowSender(datagram);
        VelSockTools::WriteOutput(datagram.bytes);
    }
}

// Without a number, silence is the end of the answers.
void ShowAnswers(DatagramSocket& socket, const Arguments& arguments) {
    const unsigned int number = *arguments.answers;
    if (number > 0) return ReceiveToOutput(socket, number, arguments.showSenders);
    try {
        ReceiveToOutput(socket, {}, arguments.showSenders);
    } catch (const VelSockTools::Failure& failure) {
        if (failure.Code() != VelSockTools::ExitCode::TimedOut) throw;
    }
}

// A peer need not answer.
Arguments WithPatience(Arguments arguments) {
    constexpr unsigned int patience = 5000;
    if (arguments.answers && !arguments.receiveTimeout) arguments.receiveTimeout = patience;
    return arguments;
}

}  // namespace

void SendDatagrams(const Arguments& arguments) {
    const Arguments patient = WithPatience(arguments);
    const auto socket = OpenDatagrams(patient);
    SendInput(*socket, patient);
    if (patient.answers) ShowAnswers(*socket, patient);
}

void ReceiveDatagrams(const Arguments& arguments) {
    const auto socket = OpenDatagrams(arguments);
    ReceiveToOutput(*socket, arguments.datagramCount, arguments.showSenders);
}

}  // namespace VelSockCat
